// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <vector>

namespace vantrell::host {

/// Who has an account on this system. User IDs come in any order, perhaps more than once; a source that can't be read
/// gives those that it gave before it failed. Safe from any thread.
class Identities {
 public:
  virtual ~Identities() = default;

  /// The platform's identity service: all users of its default authority, the hidden ones included.
  virtual std::vector<std::uint32_t> userIDsOfIdentityService() = 0;

  /// The user database, enumerated from its beginning.
  virtual std::vector<std::uint32_t> userIDsOfUserDatabase() = 0;

  /// Whether there is an account with this user ID. Directory services may know accounts that they don't enumerate.
  /// True where the question can't be answered: what is not known to be nobody's counts as somebody's.
  virtual bool mayBeUserID(std::uint32_t userID) = 0;
};

}  // namespace vantrell::host
