// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include "host/Preferences.h"
#include "host/linux/UserDatabase.h"

namespace vantrell::host {

/// Preferences as binary property lists in macOS's own folders and under its names (host/linux/PreferencesLocation.h).
///
/// A new file has mode 0600 (a user's) or 0644 (all users'); one that is replaced gets no rights that it did not have.
/// A domain without keys has no file. A file that is no property list is left alone and fails the synchronisation.
///
/// A home folder is touched as its user, must be that user's own, and no link in it is followed. Writers wait for each
/// other at a lock file in /run, which only root can open, one for each folder.
class LinuxPreferences final : public Preferences {
 public:
  /// `root` stands in for the file system's root, homes included.
  explicit LinuxPreferences(std::string root = {},
                            std::shared_ptr<const UserDatabase> users = std::make_shared<SystemUserDatabase>());

  std::unique_ptr<PreferencesChanges> changesOf(PreferencesDomain domain) override;

 private:
  std::string root_;
  std::shared_ptr<const UserDatabase> users_;
};

}  // namespace vantrell::host
