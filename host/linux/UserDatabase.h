// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

namespace vantrell::host {

struct UserRecord {
  uid_t user = 0;
  gid_t group = 0;
  std::string homeFolder;
};

/// The users of this system. Safe from any thread.
class UserDatabase {
 public:
  virtual ~UserDatabase() = default;
  virtual std::optional<UserRecord> userNamed(const std::string& name) const = 0;
  virtual std::optional<UserRecord> userWithIdentifier(uid_t identifier) const = 0;
};

/// What the name service says, wherever it has it from.
class SystemUserDatabase final : public UserDatabase {
 public:
  std::optional<UserRecord> userNamed(const std::string& name) const override;
  std::optional<UserRecord> userWithIdentifier(uid_t identifier) const override;
};

}  // namespace vantrell::host
