// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <optional>
#include <string>

#include "host/Preferences.h"
#include "host/linux/FolderChain.h"
#include "host/linux/UserDatabase.h"

namespace vantrell::host {

/// Where the preferences of a domain are stored.
struct PreferencesLocation {
  std::string start;  // the root of the file system or a home folder
  std::array<const char*, 3> components{};
  std::size_t componentCount = 0;
  std::string fileName;
  std::optional<UserRecord> user;  // whose they are; nothing for those of all users

  FolderChain folders() const;
};

/// The domain's location in the file system that begins at `root` ("" for the real one):
///
///     users   hosts      folder
///     all     this one   /Library/Preferences
///     all     all        /Library/Preferences/Network
///     all     another    /Library/Preferences/ByHost, HOST in the file's name
///     one     all        ~/Library/Preferences
///     one     this one   ~/Library/Preferences/ByHost, this machine's UUID in the file's name
///     one     another    ~/Library/Preferences/ByHost, HOST in the file's name
///
/// The file is APPLICATION.plist or APPLICATION.HOST.plist; what holds for all applications is ".GlobalPreferences".
/// The machine's UUID is that of /etc/machine-id. Nothing when there is no such user, when the machine has no
/// identifier and it is needed, and when a name is none that a file could bear.
std::optional<PreferencesLocation> preferencesLocationOf(const PreferencesDomain& domain, const std::string& root,
                                                         const UserDatabase& users);

}  // namespace vantrell::host
