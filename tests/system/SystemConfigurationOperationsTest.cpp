// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "system/SettingErrors.h"
#include "system/SystemSettingOperations.h"
#include "tests/support/FakeSystemConfiguration.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

using tests::FakeSystemConfiguration;
using enum FakeSystemConfiguration::Call;
using Calls = std::vector<FakeSystemConfiguration::Call>;

const Error kInvalid = Error::posix(posix::kInvalidArgument);
const Error kBusy = Error::posix(posix::kBusy);

struct ModifySysconf : testing::Test {
  FakeSystemConfiguration configuration;

  ErrorOrNil modify(const std::string& key, const std::string& value, const std::string& identifier = {}) {
    return modifySysconf({"client", identifier, key, value}, configuration);
  }
};

TEST_F(ModifySysconf, AppliesBeforeItCommits) {
  EXPECT_EQ(modify("key", "{ a = b; }"), std::nullopt);
  EXPECT_EQ(configuration.contents(), (Dictionary{{"key", Dictionary{{"a", "b"}}}}));
  EXPECT_EQ(configuration.calls, (Calls{Open, Lock, Set, Apply, Commit, Unlock}));
  EXPECT_EQ(configuration.clientNames, std::vector<std::string>{"client"});
}

TEST_F(ModifySysconf, AnEmptyValueRemovesTheKey) {
  configuration.setContents({{"key", 1}, {"other", 2}});
  EXPECT_EQ(modify("key", ""), std::nullopt);
  EXPECT_EQ(configuration.contents(), (Dictionary{{"other", 2}}));
  EXPECT_EQ(configuration.calls, (Calls{Open, Lock, Remove, Apply, Commit, Unlock}));
  EXPECT_EQ(modify("key", ""), setting_error::systemConfigurationNotUpdated());  // no longer there
}

TEST_F(ModifySysconf, WorksOnTheConfigurationAskedFor) {
  EXPECT_EQ(modify("key", "value", "other.plist"), std::nullopt);
  EXPECT_EQ(configuration.contents("other.plist"), (Dictionary{{"key", "value"}}));
  EXPECT_TRUE(configuration.contents().empty());
}

TEST_F(ModifySysconf, RefusesEmptyNamesAndMissingArguments) {
  EXPECT_EQ(modify("", "value"), kInvalid);
  for (const Array& arguments : {Array{"", "", "key", "value"}, Array{"client", "", "key"}, Array{},
                                 Array{"client", 1, "key", "value"}, Array{"client", "", "key", 1}})
    EXPECT_EQ(modifySysconf(arguments, configuration), kInvalid);
  EXPECT_TRUE(configuration.calls.empty());
}

TEST_F(ModifySysconf, ReportsATextThatIsNoPropertyListBeforeAnythingElse) {
  const auto error = modify("key", "(");
  ASSERT_TRUE(error);
  EXPECT_TRUE(error->isPosix(posix::kInvalidArgument));
  EXPECT_TRUE(error->userInfo().contains("NSUnderlyingError"));
  EXPECT_TRUE(configuration.calls.empty());
}

TEST_F(ModifySysconf, UnlocksWhateverFails) {
  struct Case {
    FakeSystemConfiguration::Call failing;
    Error error;
    Calls calls;
  };
  const auto failed = setting_error::systemConfigurationNotUpdated();
  const Case kCases[] = {
      {Open, failed, {Open}},
      {Lock, kBusy, {Open, Lock}},
      {Set, failed, {Open, Lock, Set, Unlock}},
      {Apply, failed, {Open, Lock, Set, Apply, Unlock}},
      {Commit, failed, {Open, Lock, Set, Apply, Commit, Unlock}},
  };
  for (const auto& [failing, error, calls] : kCases) {
    configuration.failing = {failing};
    configuration.calls.clear();
    EXPECT_EQ(modify("key", "value"), error);
    EXPECT_EQ(configuration.calls, calls);
    EXPECT_TRUE(configuration.contents().empty());
  }
  configuration.failing = {Remove};
  EXPECT_EQ(modify("key", ""), failed);
  configuration.failing = {Unlock};  // of no consequence
  EXPECT_EQ(modify("key", "value"), std::nullopt);
}

struct EnableIpvsix : testing::Test {
  EnableIpvsix() {
    configuration.setContents(
        {{"NetworkServices", Dictionary{{"service-1", Dictionary{{"IPv6", Dictionary{{"ConfigMethod", "Automatic"}}}}},
                                        {"service-2", Dictionary{{"IPv4", Dictionary()}}}}}});
  }

  FakeSystemConfiguration configuration;
  tests::RecordingLog log;
  const Log sysLog{log, "helper", "standard"};

  ErrorOrNil enable(const std::string& service, const Value& value) {
    return enableIpvsix({"client", service, value}, configuration, sysLog);
  }
  bool isEnabled() {
    const auto services = *configuration.contents().find("NetworkServices")->asDictionary();
    return !services.find("service-1")->asDictionary()->find("IPv6")->asDictionary()->contains("__INACTIVE__");
  }
  void expectLogged(const char* message) {
    EXPECT_EQ(log.entries(),
              (std::vector<tests::RecordingLog::Entry>{{host::LogLevel::Error, "helper", "standard", message}}));
    log.clear();
  }
};

TEST_F(EnableIpvsix, SwitchesTheProtocolOffAndOn) {
  EXPECT_EQ(enable("service-1", 0), std::nullopt);
  EXPECT_FALSE(isEnabled());
  EXPECT_EQ(configuration.calls, (Calls{Open, Lock, FindService, FindProtocol, Disable, Apply, Commit, Unlock}));
  configuration.calls.clear();
  EXPECT_EQ(enable("service-1", 1), std::nullopt);
  EXPECT_TRUE(isEnabled());
  EXPECT_EQ(configuration.calls, (Calls{Open, Lock, FindService, FindProtocol, Enable, Apply, Commit, Unlock}));
  EXPECT_TRUE(log.entries().empty());
}

TEST_F(EnableIpvsix, AnythingButZeroIsOn) {
  for (const Value& value : {Value(-1), Value(7u), Value(0.5), Value(true), Value(std::int64_t{1} << 40)}) {
    ASSERT_EQ(enable("service-1", 0), std::nullopt);
    EXPECT_EQ(enable("service-1", value), std::nullopt);
    EXPECT_TRUE(isEnabled());
  }
}

TEST_F(EnableIpvsix, RefusesMissingArguments) {
  for (const Array& arguments :
       {Array{"client", "service-1"}, Array{}, Array{"client", "service-1", "1"}, Array{1, "service-1", 1}})
    EXPECT_EQ(enableIpvsix(arguments, configuration, sysLog), kInvalid);
  EXPECT_TRUE(configuration.calls.empty());
}

TEST_F(EnableIpvsix, LogsThatTheConfigurationIsLocked) {
  configuration.failing = {Lock};
  EXPECT_EQ(enable("service-1", 1), kBusy);
  expectLogged("Network preferences locked by other application.");
  EXPECT_EQ(configuration.calls, (Calls{Open, Lock}));
}

TEST_F(EnableIpvsix, LogsThatThereIsNoSuchService) {
  EXPECT_EQ(enable("service-9", 1), setting_error::preferencesNotUpdated());
  expectLogged("Network service with identifier 'service-9' doesn't exist.");
  EXPECT_EQ(configuration.calls, (Calls{Open, Lock, FindService, Unlock}));
}

TEST_F(EnableIpvsix, LogsThatTheServiceHasNoSuchProtocol) {
  EXPECT_EQ(enable("service-2", 1), setting_error::preferencesNotUpdated());
  expectLogged("IPv6 protocol is not supported by selected network service.");
  EXPECT_EQ(configuration.calls, (Calls{Open, Lock, FindService, FindProtocol, Unlock}));
}

TEST_F(EnableIpvsix, UnlocksWhateverFailsAndLogsNothingMore) {
  const std::pair<FakeSystemConfiguration::Call, Calls> kCases[] = {
      {Open, {Open}},
      {Disable, {Open, Lock, FindService, FindProtocol, Disable, Unlock}},
      {Apply, {Open, Lock, FindService, FindProtocol, Disable, Apply, Unlock}},
      {Commit, {Open, Lock, FindService, FindProtocol, Disable, Apply, Commit, Unlock}},
  };
  for (const auto& [failing, calls] : kCases) {
    configuration.failing = {failing};
    configuration.calls.clear();
    EXPECT_EQ(enable("service-1", 0), setting_error::preferencesNotUpdated());
    EXPECT_EQ(configuration.calls, calls);
    EXPECT_TRUE(isEnabled());
  }
  EXPECT_TRUE(log.entries().empty());
}

}  // namespace
}  // namespace vantrell
