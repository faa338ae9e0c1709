// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/KnownOwners.h"

namespace vantrell {

UserIDSet allKnownUserIDs(host::Identities& identities) {
  const auto ofService = identities.userIDsOfIdentityService();
  const auto ofDatabase = identities.userIDsOfUserDatabase();
  UserIDSet userIDs(ofService.begin(), ofService.end());
  userIDs.insert(ofDatabase.begin(), ofDatabase.end());
  return userIDs;
}

bool KnownOwners::contains(std::uint32_t userID) {
  if (!last_ || last_->first != userID) last_ = {userID, find(userID)};
  return last_->second;
}

// Neither source need enumerate all that it knows, as large directory services don't.
bool KnownOwners::find(std::uint32_t userID) {
  if (known_.contains(userID)) return true;
  if (!identities_ || unknown_.contains(userID)) return false;
  const bool isKnown = identities_->mayBeUserID(userID);
  auto& answers = isKnown ? known_ : unknown_;
  if (unknown_.size() < kMaximumRemembered || isKnown) answers.insert(userID);
  return isKnown;
}

}  // namespace vantrell
