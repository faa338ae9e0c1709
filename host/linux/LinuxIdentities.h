// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/posix/PosixIdentities.h"

namespace vantrell::host {

/// The user database is the identity service here: files and directory services, as the name-service switch says.
class LinuxIdentities final : public PosixIdentities {
 public:
  std::vector<std::uint32_t> userIDsOfIdentityService() override { return userIDsOfUserDatabase(); }
};

}  // namespace vantrell::host
