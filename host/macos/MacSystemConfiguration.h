// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/SystemConfiguration.h"

namespace vantrell::host {

/// The configuration through the platform's own interface. Identifiers are passed on as they stand: a file's name in
/// /Library/Preferences/SystemConfiguration, or a path where there is a slash at the beginning. Only one with a zero
/// byte, which would be cut, is none.
///
/// Only root gets the lock. What another writes past it is noticed when the lock is taken, not at the commit; a file
/// that is no property list counts as an empty configuration. Applying asks the system's network daemon, and waits for
/// the lock where the session hasn't it. Commits are told to the daemon, too.
class MacSystemConfiguration final : public SystemConfiguration {
 public:
  std::unique_ptr<SystemConfigurationSession> open(std::string_view clientName, std::string_view identifier) override;
};

}  // namespace vantrell::host
