// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/Host.h"
#include "tests/support/FakeIdentities.h"

namespace vantrell {
namespace {

using UserIDs = std::vector<std::uint32_t>;

constexpr std::uint32_t kNobodys = 0x6E0B0D99;

UserIDs inOrder(UserIDs userIDs) {
  std::ranges::sort(userIDs);
  return userIDs;
}

/// The user IDs in /etc/passwd, which is part of every user database.
UserIDs userIDsOfAccountFile() {
  UserIDs userIDs;
  std::ifstream file("/etc/passwd");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) continue;
    const auto password = line.find(':');
    const auto userID = line.find(':', password + 1);
    if (userID != std::string::npos) userIDs.push_back(static_cast<std::uint32_t>(std::stoul(line.substr(userID + 1))));
  }
  return userIDs;
}

struct Maker {
  const char* name;
  std::function<std::unique_ptr<host::Identities>()> make;
};

class IdentitiesContract : public testing::TestWithParam<Maker> {
 protected:
  std::unique_ptr<host::Identities> identities_ = GetParam().make();
};

TEST_P(IdentitiesContract, EnumeratesAllAccountsOfTheSystem) {
  const auto enumerated = identities_->userIDsOfUserDatabase();
  for (const auto userID : userIDsOfAccountFile()) EXPECT_TRUE(std::ranges::count(enumerated, userID)) << userID;
  EXPECT_TRUE(std::ranges::count(enumerated, 0U)) << "root";
  EXPECT_FALSE(std::ranges::count(enumerated, kNobodys));
}

TEST_P(IdentitiesContract, EnumeratesTheSameEachTime) {
  EXPECT_EQ(inOrder(identities_->userIDsOfUserDatabase()), inOrder(identities_->userIDsOfUserDatabase()));
}

TEST_P(IdentitiesContract, KnowsWhatItEnumeratesWhenAskedForIt) {
  for (const auto userID : identities_->userIDsOfUserDatabase()) EXPECT_TRUE(identities_->mayBeUserID(userID));
  for (const auto userID : identities_->userIDsOfIdentityService()) EXPECT_TRUE(identities_->mayBeUserID(userID));
  EXPECT_FALSE(identities_->mayBeUserID(kNobodys));
}

INSTANTIATE_TEST_SUITE_P(
    All, IdentitiesContract,
    testing::Values(Maker{"Real", [] { return std::move(host::makeHost().identities); }},
                    Maker{"Fake", [] { return std::make_unique<tests::FakeIdentities>(userIDsOfAccountFile()); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(IdentitiesConcurrent, ThreadsEnumerateWithoutTakingEntriesFromEachOther) {
  const auto identities = host::makeHost().identities;
  const auto expected = inOrder(identities->userIDsOfUserDatabase());
  std::vector<std::thread> threads;
  std::vector<int> differences(4);
  for (auto& different : differences) {
    threads.emplace_back([&] {
      for (int i = 0; i < 50; ++i) different += inOrder(identities->userIDsOfUserDatabase()) != expected;
    });
  }
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(differences, std::vector<int>(4));
}

}  // namespace
}  // namespace vantrell
