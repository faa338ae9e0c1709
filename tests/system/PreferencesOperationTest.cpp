// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "system/SettingErrors.h"
#include "system/SystemSettingOperations.h"
#include "tests/support/FakePreferences.h"

namespace vantrell {
namespace {

using Domain = host::PreferencesDomain;
using Any = Domain::Any;
using Current = Domain::Current;

struct ModifyPreferences : testing::Test {
  tests::FakePreferences preferences{{"alice"}};

  ErrorOrNil modify(const std::string& application, const std::string& user, const std::string& host,
                    const std::string& value, const std::string& key = "key") {
    return modifyPreferences({key, application, user, host, value}, preferences);
  }
};

TEST_F(ModifyPreferences, StoresThePropertyList) {
  EXPECT_EQ(modify("app", "alice", "host", "<plist><integer>7</integer></plist>"), std::nullopt);
  EXPECT_EQ(modify("app", "alice", "host", "(a, b)", "other"), std::nullopt);
  EXPECT_EQ(preferences.stored({"app", "alice", "host"}), (Dictionary{{"key", 7}, {"other", Array{"a", "b"}}}));
}

TEST_F(ModifyPreferences, AnEmptyValueRemovesTheKey) {
  ASSERT_EQ(modify("app", "alice", "host", "x"), std::nullopt);
  ASSERT_EQ(modify("app", "alice", "host", "y", "other"), std::nullopt);
  EXPECT_EQ(modify("app", "alice", "host", ""), std::nullopt);
  EXPECT_EQ(preferences.stored({"app", "alice", "host"}), (Dictionary{{"other", "y"}}));
}

TEST_F(ModifyPreferences, TheConstantsTextsStandForTheConstants) {
  struct Case {
    const char* application;
    const char* user;
    const char* host;
    Domain domain;
  };
  const Case kCases[] = {
      {"NSGlobalDomain", "alice", "host", {Any(), "alice", "host"}},
      {"app", "kCFPreferencesAnyUser", "kCFPreferencesCurrentHost", {"app", Any(), Current()}},
      {"app", "kCFPreferencesCurrentUser", "kCFPreferencesAnyHost", {"app", Current(), Any()}},
      {"kCFPreferencesAnyUser",
       "alice",
       "kCFPreferencesAnyUser",
       {"kCFPreferencesAnyUser", "alice", "kCFPreferencesAnyUser"}},
      {"nsglobaldomain", "alice", "kCFPreferencesAnyHost ", {"nsglobaldomain", "alice", "kCFPreferencesAnyHost "}},
  };
  for (const auto& [application, user, host, domain] : kCases) {
    EXPECT_EQ(modify(application, user, host, "value"), std::nullopt) << application << user << host;
    EXPECT_EQ(preferences.stored(domain), (Dictionary{{"key", "value"}})) << application << user << host;
  }
  EXPECT_EQ(modify("app", "kCFPreferencesAnyHost", "host", "value"), setting_error::preferencesNotUpdated());
}

TEST_F(ModifyPreferences, RefusesEmptyNamesAndMissingArguments) {
  const Error invalid = Error::posix(posix::kInvalidArgument);
  EXPECT_EQ(modify("", "alice", "host", "x"), invalid);
  EXPECT_EQ(modify("app", "", "host", "x"), invalid);
  EXPECT_EQ(modify("app", "alice", "", "x"), invalid);
  EXPECT_EQ(modify("app", "alice", "host", "x", ""), invalid);
  EXPECT_EQ(modifyPreferences({"key", "app", "alice", "host"}, preferences), invalid);
  EXPECT_EQ(modifyPreferences({"key", "app", "alice", "host", 7}, preferences), invalid);
  EXPECT_EQ(modifyPreferences({"", "app", "alice", "host", "{"}, preferences), invalid);  // before the text is read
  EXPECT_FALSE(preferences.stored({"app", "alice", "host"}));
}

TEST_F(ModifyPreferences, ReportsATextThatIsNoPropertyList) {
  const auto error = modify("app", "alice", "host", "{ key = ");
  ASSERT_TRUE(error);
  EXPECT_TRUE(error->isPosix(posix::kInvalidArgument));
  EXPECT_TRUE(error->userInfo().contains("NSUnderlyingError"));
  EXPECT_FALSE(preferences.stored({"app", "alice", "host"}));
}

TEST_F(ModifyPreferences, ReportsAFailedSynchronisation) {
  preferences.failsToSynchronize = true;
  EXPECT_EQ(modify("app", "alice", "host", "x"), setting_error::preferencesNotUpdated());
}

}  // namespace
}  // namespace vantrell
