// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/macos/MacIdentities.h"

namespace vantrell::tests {

using testing::Contains;
using testing::Not;

namespace {

constexpr std::uint32_t kNobodys = 0x6E0B0D99;

}  // namespace

TEST(MacIdentities, TheIdentityServiceKnowsThisUserAndTheHiddenOnes) {
  const auto userIDs = host::MacIdentities().userIDsOfIdentityService();
  EXPECT_THAT(userIDs, Contains(getuid()));
  EXPECT_THAT(userIDs, Contains(0U)) << "root, which is hidden";
  EXPECT_THAT(userIDs, Not(Contains(kNobodys)));
}

TEST(MacIdentities, TheUserDatabaseKnowsThisUserAndRoot) {
  const auto userIDs = host::MacIdentities().userIDsOfUserDatabase();
  EXPECT_THAT(userIDs, Contains(getuid()));
  EXPECT_THAT(userIDs, Contains(0U));
  EXPECT_THAT(userIDs, Not(Contains(kNobodys)));
}

TEST(MacIdentities, NobodyKnowsAUserIDThatNobodyHas) {
  host::MacIdentities identities;
  for (const auto userID : identities.userIDsOfIdentityService()) EXPECT_TRUE(identities.mayBeUserID(userID)) << userID;
  EXPECT_FALSE(identities.mayBeUserID(kNobodys));
}

}  // namespace vantrell::tests
