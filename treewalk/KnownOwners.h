// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <unordered_set>
#include <utility>

#include "host/Identities.h"

namespace vantrell {

using UserIDSet = std::unordered_set<std::uint32_t>;

/// All users of the identity service and of the user database.
UserIDSet allKnownUserIDs(host::Identities& identities);

/// Whether the owners of objects are known. Most objects have the owner of the one before. One thread at a time.
class KnownOwners {
 public:
  /// Owners that are not in the set are looked up, each once, unless there are no identities. These must outlive this.
  explicit KnownOwners(UserIDSet userIDs, host::Identities* identities = nullptr)
      : known_(std::move(userIDs)), identities_(identities) {}

  bool contains(std::uint32_t userID);

 private:
  static constexpr std::size_t kMaximumRemembered = 65536;

  bool find(std::uint32_t userID);

  UserIDSet known_;
  UserIDSet unknown_;  // looked up in vain
  host::Identities* identities_;
  std::optional<std::pair<std::uint32_t, bool>> last_;
};

}  // namespace vantrell
