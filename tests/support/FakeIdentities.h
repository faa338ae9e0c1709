// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <utility>
#include <vector>

#include "host/Identities.h"

namespace vantrell::tests {

/// Accounts of a test's own: those of the identity service, those of the user database, and those that are known when
/// asked for but not enumerated.
class FakeIdentities final : public host::Identities {
 public:
  using UserIDs = std::vector<std::uint32_t>;

  explicit FakeIdentities(UserIDs database = {}, UserIDs service = {}, UserIDs hidden = {})
      : database_(std::move(database)), service_(std::move(service)), hidden_(std::move(hidden)) {}

  UserIDs userIDsOfIdentityService() override { return service_; }
  UserIDs userIDsOfUserDatabase() override { return database_; }
  bool mayBeUserID(std::uint32_t userID) override {
    lookUps.push_back(userID);
    const auto holds = [userID](const UserIDs& userIDs) { return std::ranges::find(userIDs, userID) != userIDs.end(); };
    return holds(service_) || holds(database_) || holds(hidden_);
  }

  UserIDs lookUps;

 private:
  UserIDs database_;
  UserIDs service_;
  UserIDs hidden_;
};

}  // namespace vantrell::tests
