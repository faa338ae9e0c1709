// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/host/PreferencesContract.h"
#include "tests/support/FakePreferences.h"

namespace vantrell::tests {
namespace {

struct FakeCandidate final : PreferencesCandidate {
  FakePreferences fake{{"me", "alice"}};
  host::Preferences& preferences() override { return fake; }
  std::vector<host::PreferencesDomain> domains() override { return allKindsOfPreferencesDomains(); }
  std::vector<host::PreferencesDomain> impossibleDomains() override { return preferencesDomainsWithImpossibleNames(); }
  std::optional<Dictionary> stored(const host::PreferencesDomain& domain) override { return fake.stored(domain); }
};

TEST_P(PreferencesContract, StoresEveryDomainByItself) {
  const auto domains = candidate->domains();
  for (std::size_t i = 0; i < domains.size(); ++i) EXPECT_TRUE(set(domains[i], "key", i)) << i;
  for (std::size_t i = 0; i < domains.size(); ++i)
    EXPECT_EQ(candidate->stored(domains[i]), (Dictionary{{"key", i}})) << i;
}

TEST_P(PreferencesContract, KeepsTheOtherKeys) {
  const Value value = Dictionary{{"list", Array{1, true, 2.5, "text"}}, {"data", Data{1, 2}}, {"date", Date()}};
  for (const auto& domain : candidate->domains()) {
    EXPECT_TRUE(set(domain, "one", value));
    EXPECT_TRUE(set(domain, "two", 2));
    EXPECT_TRUE(set(domain, "three", 3));
    EXPECT_TRUE(set(domain, "two", "changed"));
    EXPECT_TRUE(set(domain, "three", std::nullopt));
    EXPECT_EQ(candidate->stored(domain), (Dictionary{{"one", value}, {"two", "changed"}}));
  }
}

TEST_P(PreferencesContract, ADomainWithoutKeysIsGone) {
  for (const auto& domain : candidate->domains()) {
    EXPECT_TRUE(set(domain, "key", 1));
    EXPECT_TRUE(set(domain, "other", std::nullopt));
    EXPECT_TRUE(candidate->stored(domain));
    EXPECT_TRUE(set(domain, "key", std::nullopt));
    EXPECT_FALSE(candidate->stored(domain));
    EXPECT_TRUE(set(domain, "key", std::nullopt));
    EXPECT_FALSE(candidate->stored(domain));
  }
}

TEST_P(PreferencesContract, ChangesThatAreNotSynchronisedAreDropped) {
  const auto domain = candidate->domains().front();
  candidate->preferences().changesOf(domain)->setValue("key", 1);
  EXPECT_TRUE(candidate->preferences().changesOf(domain)->synchronize());
  EXPECT_FALSE(candidate->stored(domain));
  EXPECT_TRUE(set(domain, "other", 1));
  EXPECT_EQ(candidate->stored(domain), (Dictionary{{"other", 1}}));
}

TEST_P(PreferencesContract, SeveralChangesAreSynchronisedTogether) {
  for (const auto& domain : candidate->domains()) {
    const auto changes = candidate->preferences().changesOf(domain);
    changes->setValue("a", 1);
    changes->setValue("b", 2);
    changes->setValue("a", std::nullopt);
    changes->setValue("c", 3);
    EXPECT_TRUE(changes->synchronize());
    EXPECT_EQ(candidate->stored(domain), (Dictionary{{"b", 2}, {"c", 3}}));
    EXPECT_TRUE(changes->synchronize());
  }
}

TEST_P(PreferencesContract, WhatCannotBeStoredIsToldWhenSynchronised) {
  const auto domains = candidate->impossibleDomains();
  ASSERT_FALSE(domains.empty());
  for (std::size_t i = 0; i < domains.size(); ++i) EXPECT_FALSE(set(domains[i], "key", 1)) << i;
}

TEST_P(PreferencesContractConcurrent, NoWritersKeyIsLost) {
  constexpr int kThreads = 4;
  constexpr int kKeys = 25;
  const auto domain = candidate->domains().front();
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      for (int key = 0; key < kKeys; ++key)
        EXPECT_TRUE(set(domain, std::to_string(thread) + "-" + std::to_string(key), key));
    });
  for (auto& thread : threads) thread.join();
  const auto stored = candidate->stored(domain);
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->size(), static_cast<std::size_t>(kThreads * kKeys));
}

const auto kFake = testing::Values(PreferencesImplementation{"Fake", [] { return std::make_unique<FakeCandidate>(); }});
INSTANTIATE_TEST_SUITE_P(, PreferencesContract, kFake, PreferencesContract::nameOf);
INSTANTIATE_TEST_SUITE_P(, PreferencesContractConcurrent, kFake, PreferencesContract::nameOf);

}  // namespace
}  // namespace vantrell::tests
