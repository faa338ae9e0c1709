// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/Preferences.h"

namespace vantrell::host {

/// Preferences through the platform's own interface: its daemon alone may touch their files.
///
/// The names in a domain are passed on as they stand and mean what they mean to the platform: an application with a
/// slash at the beginning is a file's path. A name with a zero byte, which would be cut, fails the synchronisation. So
/// does a value that no property list can hold, before anything is changed. Which domains can't be written only the
/// platform knows; changes that it refused may stay in its cache, and be part of the next synchronisation of their
/// domain by this process.
class MacPreferences final : public Preferences {
 public:
  std::unique_ptr<PreferencesChanges> changesOf(PreferencesDomain domain) override;
};

}  // namespace vantrell::host
