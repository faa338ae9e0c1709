// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Preferences of applications that there are not, gone again after each test.

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#import <Foundation/Foundation.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/macos/CoreFoundationRef.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/MacPreferences.h"
#include "tests/host/PreferencesContract.h"

namespace vantrell {
namespace {

using Domain = host::PreferencesDomain;
using Any = Domain::Any;
using Current = Domain::Current;
using host::CoreFoundationRef;
using tests::PreferencesContract;
using tests::PreferencesContractConcurrent;
using namespace std::string_literals;

std::string nameOfNewApplication() {
  return "com.vantrell.test." + host::textFrom([[NSUUID UUID] UUIDString]);
}

/// The names of a domain of an application of a test's own, whose keys it may look at and remove.
struct NamesOf {
  explicit NamesOf(const Domain& domain)
      : application(host::bridgedRef<CFStringRef>(host::stringFrom(std::get<std::string>(domain.application)))),
        user(std::holds_alternative<Any>(domain.user) ? kCFPreferencesAnyUser : kCFPreferencesCurrentUser),
        host(std::holds_alternative<Any>(domain.host) ? kCFPreferencesAnyHost : kCFPreferencesCurrentHost) {}

  CoreFoundationRef<CFStringRef> application;
  CFStringRef user;
  CFStringRef host;
};

std::optional<Dictionary> storedIn(const Domain& domain) {
  const NamesOf names(domain);
  CFPreferencesSynchronize(names.application.get(), names.user, names.host);
  const CoreFoundationRef all(CFPreferencesCopyMultiple(nullptr, names.application.get(), names.user, names.host));
  auto contents = host::dictionaryFrom((__bridge NSDictionary*)all.get());
  return contents && !contents->empty() ? std::move(contents) : std::nullopt;
}

void removeAllOf(const Domain& domain) {
  const NamesOf names(domain);
  const CoreFoundationRef keys(CFPreferencesCopyKeyList(names.application.get(), names.user, names.host));
  if (keys) CFPreferencesSetMultiple(nullptr, keys.get(), names.application.get(), names.user, names.host);
  CFPreferencesSynchronize(names.application.get(), names.user, names.host);
}

struct MacCandidate final : tests::PreferencesCandidate {
  const std::string application = nameOfNewApplication();
  const std::string other = nameOfNewApplication();
  host::MacPreferences real;

  ~MacCandidate() override {
    for (const auto& domain : domains()) removeAllOf(domain);
  }
  host::Preferences& preferences() override { return real; }
  std::vector<Domain> domains() override {
    std::vector<Domain> domains;
    for (const auto& name : {application, other}) {
      domains.push_back({name, Current(), Any()});
      domains.push_back({name, Current(), Current()});
      if (geteuid() == 0) domains.push_back({name, Any(), Current()});
    }
    return domains;
  }
  std::vector<Domain> impossibleDomains() override {
    return {{"a\0b"s, Current(), Any()}, {application, "a\0b"s, Any()}, {application, Current(), "a\0b"s}};
  }
  std::optional<Dictionary> stored(const Domain& domain) override { return storedIn(domain); }
};

const auto kMac =
    testing::Values(tests::PreferencesImplementation{"Mac", [] { return std::make_unique<MacCandidate>(); }});
INSTANTIATE_TEST_SUITE_P(, PreferencesContract, kMac, PreferencesContract::nameOf);
INSTANTIATE_TEST_SUITE_P(, PreferencesContractConcurrent, kMac, PreferencesContract::nameOf);

/// What the system's tool, another process, finds under a key: its output without the line's end, or nothing.
std::optional<std::string> toldByTool(const std::string& before, const std::string& arguments) {
  FILE* const pipe = popen((before + "/usr/bin/defaults " + arguments + " 2>/dev/null").c_str(), "r");
  if (!pipe) return std::nullopt;
  std::string output;
  std::array<char, 4096> buffer;
  while (const auto count = fread(buffer.data(), 1, buffer.size(), pipe)) output.append(buffer.data(), count);
  if (pclose(pipe) != 0) return std::nullopt;
  if (output.ends_with('\n')) output.pop_back();
  return output;
}

struct MacPreferences : testing::Test {
  MacCandidate candidate;
  const std::string& application = candidate.application;

  bool set(const Domain& domain, const std::string& key, std::optional<Value> value) {
    const auto changes = candidate.real.changesOf(domain);
    changes->setValue(key, std::move(value));
    return changes->synchronize();
  }
};

TEST_F(MacPreferences, AreThereForOtherProcessesWhenSynchronised) {
  const auto changes = candidate.real.changesOf({application, Current(), Any()});
  changes->setValue("key", "value of it");
  EXPECT_EQ(toldByTool("", "read " + application + " key"), std::nullopt);
  ASSERT_TRUE(changes->synchronize());
  EXPECT_EQ(toldByTool("", "read " + application + " key"), "value of it");
  ASSERT_TRUE(set({application, Current(), Any()}, "key", std::nullopt));
  EXPECT_EQ(toldByTool("", "read " + application + " key"), std::nullopt);
}

TEST_F(MacPreferences, OfThisHostAreApartFromThoseOfAny) {
  ASSERT_TRUE(set({application, Current(), Current()}, "key", "of this host"));
  EXPECT_EQ(toldByTool("", "-currentHost read " + application + " key"), "of this host");
  EXPECT_EQ(toldByTool("", "read " + application + " key"), std::nullopt);
}

TEST_F(MacPreferences, WhatAPropertyListCannotHoldIsNotStored) {
  const Domain domain{application, Current(), Any()};
  const auto changes = candidate.real.changesOf(domain);
  changes->setValue("one", 1);
  changes->setValue("null", Value());
  EXPECT_FALSE(changes->synchronize());
  EXPECT_EQ(storedIn(domain), std::nullopt);
}

TEST_F(MacPreferences, HoldValuesOfEveryDepth) {
  Value deep = 1;
  for (int i = 0; i < 100; ++i) deep = Array{deep};
  EXPECT_TRUE(set({application, Current(), Any()}, "key", deep));
  EXPECT_TRUE(toldByTool("", "read " + application + " key"));
}

struct MacPreferencesAsRoot : MacPreferences {
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "Only root may change the preferences of others.";
  }
};

TEST_F(MacPreferencesAsRoot, OfAllUsersLieInTheLibrary) {
  ASSERT_TRUE(set({application, Any(), Current()}, "key", "of all"));
  EXPECT_EQ(toldByTool("", "read /Library/Preferences/" + application + " key"), "of all");
}

TEST_F(MacPreferencesAsRoot, OfAnotherUserAreFoundByThatUser) {
  const auto* const user = std::getenv("SUDO_USER");
  if (!user) GTEST_SKIP() << "There is no other user known: run this with sudo.";
  const Domain domain{application, user, Any()};
  const auto asUser = "/usr/bin/sudo -u '"s + user + "' ";
  ASSERT_TRUE(set(domain, "key", "of another"));
  EXPECT_EQ(toldByTool(asUser, "read " + application + " key"), "of another");
  ASSERT_TRUE(set(domain, "key", std::nullopt));
  EXPECT_EQ(toldByTool(asUser, "read " + application + " key"), std::nullopt);
}

}  // namespace
}  // namespace vantrell
