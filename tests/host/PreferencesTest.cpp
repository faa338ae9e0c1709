// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/linux/PreferencesLocation.h"
#include "tests/support/FakePreferences.h"
#include "tests/support/PrivatePreferences.h"

namespace vantrell {
namespace {

using Domain = host::PreferencesDomain;
using Any = Domain::Any;
using Current = Domain::Current;
using namespace std::string_literals;

/// Preferences of the users "me" and "alice", and a look at what is stored.
struct Candidate {
  virtual ~Candidate() = default;
  virtual host::Preferences& preferences() = 0;
  virtual std::optional<Dictionary> stored(const Domain& domain) = 0;
};

struct FakeCandidate final : Candidate {
  tests::FakePreferences fake{{"me", "alice"}};
  host::Preferences& preferences() override { return fake; }
  std::optional<Dictionary> stored(const Domain& domain) override { return fake.stored(domain); }
};

struct LinuxCandidate final : Candidate {
  tests::PrivatePreferences real;
  host::Preferences& preferences() override { return real.preferences; }
  std::optional<Dictionary> stored(const Domain& domain) override {
    const auto location = host::preferencesLocationOf(domain, real.root.path(), *real.users);
    if (!location) return std::nullopt;
    std::string path = location->start.substr(real.root.path().size());
    for (std::size_t i = 0; i < location->componentCount; ++i) path += "/"s + location->components[i];
    return real.contentsOf(path + "/" + location->fileName);
  }
};

struct Implementation {
  const char* name;
  std::function<std::unique_ptr<Candidate>()> make;
  friend void PrintTo(const Implementation& implementation, std::ostream* stream) { *stream << implementation.name; }
};

struct PreferencesContract : testing::TestWithParam<Implementation> {
  std::unique_ptr<Candidate> candidate = GetParam().make();

  bool set(const Domain& domain, const std::string& key, std::optional<Value> value) {
    const auto changes = candidate->preferences().changesOf(domain);
    changes->setValue(key, std::move(value));
    return changes->synchronize();
  }
};

TEST_P(PreferencesContract, StoresEveryDomainByItself) {
  std::vector<Domain> domains;
  for (const decltype(Domain::application)& application :
       {decltype(Domain::application)(Any()), {"app"}, {"com.other"}})
    for (const decltype(Domain::user)& user : {decltype(Domain::user)(Any()), {Current()}, {"alice"}})
      for (const decltype(Domain::host)& host : {decltype(Domain::host)(Any()), {Current()}, {"elsewhere"}})
        domains.push_back({application, user, host});
  for (std::size_t i = 0; i < domains.size(); ++i) EXPECT_TRUE(set(domains[i], "key", i)) << i;
  for (std::size_t i = 0; i < domains.size(); ++i)
    EXPECT_EQ(candidate->stored(domains[i]), (Dictionary{{"key", i}})) << i;
}

TEST_P(PreferencesContract, KeepsTheOtherKeys) {
  const Domain domain{"app", "alice", Any()};
  const Value value = Dictionary{{"list", Array{1, true, 2.5, "text"}}, {"data", Data{1, 2}}, {"date", Date()}};
  EXPECT_TRUE(set(domain, "one", value));
  EXPECT_TRUE(set(domain, "two", 2));
  EXPECT_TRUE(set(domain, "three", 3));
  EXPECT_TRUE(set(domain, "two", "changed"));
  EXPECT_TRUE(set(domain, "three", std::nullopt));
  EXPECT_EQ(candidate->stored(domain), (Dictionary{{"one", value}, {"two", "changed"}}));
}

TEST_P(PreferencesContract, ADomainWithoutKeysIsGone) {
  const Domain domain{"app", Any(), Current()};
  EXPECT_TRUE(set(domain, "key", 1));
  EXPECT_TRUE(set(domain, "other", std::nullopt));
  EXPECT_TRUE(candidate->stored(domain));
  EXPECT_TRUE(set(domain, "key", std::nullopt));
  EXPECT_FALSE(candidate->stored(domain));
  EXPECT_TRUE(set(domain, "key", std::nullopt));
  EXPECT_FALSE(candidate->stored(domain));
}

TEST_P(PreferencesContract, ChangesThatAreNotSynchronisedAreDropped) {
  const Domain domain{"app", Any(), Any()};
  candidate->preferences().changesOf(domain)->setValue("key", 1);
  EXPECT_TRUE(candidate->preferences().changesOf(domain)->synchronize());
  EXPECT_FALSE(candidate->stored(domain));
}

TEST_P(PreferencesContract, SeveralChangesAreSynchronisedTogether) {
  const Domain domain{"app", Current(), Any()};
  const auto changes = candidate->preferences().changesOf(domain);
  changes->setValue("a", 1);
  changes->setValue("b", 2);
  changes->setValue("a", std::nullopt);
  changes->setValue("c", 3);
  EXPECT_TRUE(changes->synchronize());
  EXPECT_EQ(candidate->stored(domain), (Dictionary{{"b", 2}, {"c", 3}}));
  EXPECT_TRUE(changes->synchronize());
}

TEST_P(PreferencesContract, WhatCannotBeStoredIsToldWhenSynchronised) {
  for (const Domain& domain :
       {Domain{"app", "nobody-of-that-name", Any()}, Domain{"a/b", Any(), Any()}, Domain{"../../x", Any(), Current()},
        Domain{"a\0b"s, Any(), Any()}, Domain{"app", Any(), "a/b"}, Domain{"app", "alice", "../x"},
        Domain{"app", "al\0ice"s, Any()}})
    EXPECT_FALSE(set(domain, "key", 1));
}

struct PreferencesContractConcurrent : PreferencesContract {};

TEST_P(PreferencesContractConcurrent, NoWritersKeyIsLost) {
  constexpr int kThreads = 4;
  constexpr int kKeys = 25;
  const Domain domain{"app", "alice", Any()};
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread)
      threads.emplace_back([&, thread] {
        for (int key = 0; key < kKeys; ++key)
          EXPECT_TRUE(set(domain, std::to_string(thread) + "-" + std::to_string(key), key));
      });
  }
  const auto stored = candidate->stored(domain);
  ASSERT_TRUE(stored);
  EXPECT_EQ(stored->size(), static_cast<std::size_t>(kThreads * kKeys));
}

const auto kImplementations =
    testing::Values(Implementation{"Fake", [] { return std::make_unique<FakeCandidate>(); }},
                    Implementation{"Linux", [] { return std::make_unique<LinuxCandidate>(); }});
const auto kNameOf = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(, PreferencesContract, kImplementations, kNameOf);
INSTANTIATE_TEST_SUITE_P(, PreferencesContractConcurrent, kImplementations, kNameOf);

}  // namespace
}  // namespace vantrell
