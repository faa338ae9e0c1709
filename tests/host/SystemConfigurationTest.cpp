// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/host/SystemConfigurationContract.h"
#include "tests/support/FakeSystemConfiguration.h"

namespace vantrell::tests {
namespace {

using namespace std::string_literals;

struct FakeCandidate final : SystemConfigurationCandidate {
  FakeSystemConfiguration fake;
  host::SystemConfiguration& configuration() override { return fake; }
  Dictionary contents(const std::string& identifier) override { return fake.contents(identifier); }
  void setContents(const Dictionary& contents) override { fake.setContents(contents); }
};

Dictionary twoServices() {
  const Dictionary ethernet{{"Type", "Ethernet"}};  // of no device
  return {
      {"NetworkServices",
       Dictionary{{"with", Dictionary{{"Interface", ethernet}, {"IPv6", Dictionary{{"ConfigMethod", "Automatic"}}}}},
                  {"without", Dictionary{{"Interface", ethernet}, {"IPv4", Dictionary()}}},
                  {"none", "text"}}},
      {"other", 1}};
}

TEST_P(SystemConfigurationContract, CommitsWhatWasSetAndKeepsTheRest) {
  EXPECT_TRUE(setAndCommit("one", 1));
  EXPECT_TRUE(setAndCommit("two", Dictionary{{"list", Array{"a", true}}}));
  EXPECT_TRUE(setAndCommit("one", "changed"));
  EXPECT_EQ(candidate->contents(""), (Dictionary{{"one", "changed"}, {"two", Dictionary{{"list", Array{"a", true}}}}}));
}

TEST_P(SystemConfigurationContract, RemovesOnlyWhatIsThere) {
  candidate->setContents({{"one", 1}, {"two", 2}});
  const auto session = open();
  ASSERT_TRUE(session->lock(true));
  EXPECT_FALSE(session->removeValue("three"));
  EXPECT_TRUE(session->removeValue("one"));
  EXPECT_FALSE(session->removeValue("one"));
  EXPECT_TRUE(session->commitChanges());
  EXPECT_EQ(candidate->contents(""), (Dictionary{{"two", 2}}));
}

TEST_P(SystemConfigurationContract, WhatWasNotCommittedIsGone) {
  {
    const auto session = open();
    ASSERT_TRUE(session->lock(true));
    EXPECT_TRUE(session->setValue("key", 1));
    EXPECT_TRUE(session->applyChanges());
  }
  EXPECT_TRUE(candidate->contents("").empty());
  EXPECT_TRUE(setAndCommit("other", 1));  // the lock is free as well
  EXPECT_EQ(candidate->contents(""), (Dictionary{{"other", 1}}));
}

TEST_P(SystemConfigurationContract, ConfigurationsAreApart) {
  const auto session = open("other.plist");
  ASSERT_TRUE(session->lock(true));
  EXPECT_TRUE(open()->lock(false));
  EXPECT_TRUE(session->setValue("key", 1));
  EXPECT_TRUE(session->commitChanges());
  EXPECT_EQ(candidate->contents("other.plist"), (Dictionary{{"key", 1}}));
  EXPECT_TRUE(candidate->contents("").empty());
}

TEST_P(SystemConfigurationContract, AnIdentifierWithAZeroByteIsNone) {
  EXPECT_EQ(open("a\0b"s), nullptr);
}

TEST_P(SystemConfigurationContract, OneHoldsTheLock) {
  const auto first = open();
  const auto second = open();
  EXPECT_FALSE(first->unlock());
  EXPECT_FALSE(first->commitChanges());
  ASSERT_TRUE(first->lock(true));
  EXPECT_FALSE(first->lock(true));
  EXPECT_FALSE(first->lock(false));
  EXPECT_FALSE(second->lock(false));
  EXPECT_FALSE(second->unlock());
  EXPECT_TRUE(first->unlock());
  EXPECT_FALSE(first->unlock());
  EXPECT_TRUE(second->lock(false));
  EXPECT_FALSE(first->lock(false));
}

TEST_P(SystemConfigurationContract, ASessionGoesStaleWhenAnotherCommits) {
  const auto session = open();
  EXPECT_EQ(session->networkService("service"), nullptr);  // has read now
  EXPECT_TRUE(setAndCommit("key", 1));
  EXPECT_FALSE(session->lock(true));
  EXPECT_TRUE(open()->lock(false));  // it does not keep the lock
  EXPECT_EQ(candidate->contents(""), (Dictionary{{"key", 1}}));
}

TEST_P(SystemConfigurationContract, ASessionCommitsAgainAndAgain) {
  const auto session = open();
  ASSERT_TRUE(session->lock(true));
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(session->setValue("key", i));
    EXPECT_TRUE(session->commitChanges());
    EXPECT_TRUE(session->commitChanges());  // nothing to do
    EXPECT_EQ(candidate->contents(""), (Dictionary{{"key", i}}));
  }
}

TEST_P(SystemConfigurationContract, FindsServicesWithAndWithoutTheProtocol) {
  candidate->setContents(twoServices());
  const auto session = open();
  ASSERT_TRUE(session->networkService("with"));
  EXPECT_TRUE(session->networkService("with")->ipv6Protocol());
  ASSERT_TRUE(session->networkService("without"));
  EXPECT_FALSE(session->networkService("without")->ipv6Protocol());
  for (const auto* identifier : {"none", "missing", "", "with/IPv6", "other"})
    EXPECT_FALSE(session->networkService(identifier)) << identifier;
}

TEST_P(SystemConfigurationContract, AProtocolThatIsOffIsMarked) {
  candidate->setContents(twoServices());
  const auto ipv6Of = [&] {
    const auto contents = candidate->contents("");
    return *contents.find("NetworkServices")
                ->asDictionary()
                ->find("with")
                ->asDictionary()
                ->find("IPv6")
                ->asDictionary();
  };
  for (const bool enabled : {false, false, true, true, false}) {
    const auto session = open();
    ASSERT_TRUE(session->lock(true));
    EXPECT_TRUE(session->networkService("with")->ipv6Protocol()->setEnabled(enabled));
    EXPECT_TRUE(session->applyChanges());
    EXPECT_TRUE(session->commitChanges());
    EXPECT_EQ(ipv6Of(), enabled ? (Dictionary{{"ConfigMethod", "Automatic"}})
                                : (Dictionary{{"ConfigMethod", "Automatic"}, {"__INACTIVE__", true}}));
  }
  auto others = candidate->contents("");
  auto expected = twoServices();
  others.remove("NetworkServices");
  expected.remove("NetworkServices");
  EXPECT_EQ(others, expected);
}

TEST_P(SystemConfigurationContractConcurrent, WritersWaitForEachOther) {
  constexpr int kThreads = 4;
  constexpr int kKeys = 20;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread)
    threads.emplace_back([&, thread] {
      for (int key = 0; key < kKeys; ++key)
        EXPECT_TRUE(setAndCommit(std::to_string(thread) + "-" + std::to_string(key), key));
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(candidate->contents("").size(), static_cast<std::size_t>(kThreads * kKeys));
}

TEST_P(SystemConfigurationContractConcurrent, AWaitingOneGetsTheLockWhenItIsFree) {
  auto first = open();
  ASSERT_TRUE(first->lock(true));
  std::atomic<bool> isLocked = false;
  std::thread waiting([&] {
    const auto second = open();
    EXPECT_TRUE(second->lock(true));
    isLocked = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(isLocked);
  first.reset();  // closing is as good as unlocking
  waiting.join();
  EXPECT_TRUE(isLocked);
}

TEST_P(StrictSystemConfigurationContract, HasNoConfigurationBeyondItsOwn) {
  for (const auto& identifier : {"."s, ".."s, "/"s, "a/b"s, "../x"s, "/etc/passwd"s, "a\0b"s})
    EXPECT_EQ(open(identifier), nullptr) << identifier;
}

TEST_P(StrictSystemConfigurationContract, ACommitDoesNotOverwriteWhatSomebodyElseWrote) {
  const auto session = open();
  ASSERT_TRUE(session->lock(true));
  ASSERT_TRUE(session->setValue("key", 1));
  candidate->setContents({{"other", 2}});  // past the lock
  EXPECT_FALSE(session->commitChanges());
  EXPECT_TRUE(session->unlock());
  EXPECT_EQ(candidate->contents(""), (Dictionary{{"other", 2}}));
}

TEST_P(StrictSystemConfigurationContract, AProtocolThatIsNoDictionaryIsNone) {
  candidate->setContents({{"NetworkServices", Dictionary{{"odd", Dictionary{{"IPv6", "text"}}}}}});
  const auto session = open();
  ASSERT_TRUE(session->networkService("odd"));
  EXPECT_FALSE(session->networkService("odd")->ipv6Protocol());
}

const auto kFake =
    testing::Values(SystemConfigurationImplementation{"Fake", [] { return std::make_unique<FakeCandidate>(); }});
INSTANTIATE_TEST_SUITE_P(, SystemConfigurationContract, kFake, SystemConfigurationContract::nameOf);
INSTANTIATE_TEST_SUITE_P(, SystemConfigurationContractConcurrent, kFake, SystemConfigurationContract::nameOf);
INSTANTIATE_TEST_SUITE_P(, StrictSystemConfigurationContract, kFake, SystemConfigurationContract::nameOf);

}  // namespace
}  // namespace vantrell::tests
