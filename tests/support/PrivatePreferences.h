// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/Dictionary.h"
#include "foundation/Value.h"
#include "host/linux/LinuxPreferences.h"
#include "host/linux/PropertyListFile.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

/// Users with home folders that a test made.
class FixedUsers final : public host::UserDatabase {
 public:
  std::optional<host::UserRecord> userNamed(const std::string& name) const override {
    const auto found = users.find(name);
    return found == users.end() ? std::nullopt : std::optional(found->second);
  }
  std::optional<host::UserRecord> userWithIdentifier(uid_t identifier) const override {
    for (const auto& [name, record] : users)
      if (record.user == identifier) return record;
    return std::nullopt;
  }
  std::map<std::string, host::UserRecord> users;
};

/// A file system of the test's own with a machine identifier and two users: "me", who runs the test, and "alice", who
/// is somebody else where the test runs as root.
struct PrivatePreferences {
  static constexpr char kMachineIdentifier[] = "00112233445566778899aabbccddeeff";
  static constexpr char kMachineUuid[] = "00112233-4455-6677-8899-AABBCCDDEEFF";
  static constexpr uid_t kAlice = 12345;

  PrivatePreferences() {
    chmod(root.path().c_str(), 0755);  // others have to get to their homes
    root.makeFolder("etc");
    root.makeFile("etc/machine-id", std::string(kMachineIdentifier) + "\n");
    users->users["me"] = {geteuid(), getegid(), "/home/me"};
    users->users["alice"] = {geteuid() == 0 ? kAlice : geteuid(), geteuid() == 0 ? kAlice : getegid(), "/home/alice"};
    for (const auto& [name, record] : users->users) {
      const auto home = root.makeFolder("home/" + name);
      if (chown(home.c_str(), record.user, record.group) != 0 || chmod(home.c_str(), 0700) != 0)
        throw std::runtime_error("no home could be made at " + home);
    }
  }

  /// What is in the file, nothing without one.
  std::optional<Dictionary> contentsOf(const std::string& file) const {
    auto list = host::readPropertyListFile(AT_FDCWD, root.path(file));
    return list && *list ? std::optional((*list)->contents) : std::nullopt;
  }

  TemporaryFolder root;
  std::shared_ptr<FixedUsers> users = std::make_shared<FixedUsers>();
  host::LinuxPreferences preferences{root.path(), users};
};

}  // namespace vantrell::tests
