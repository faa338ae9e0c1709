// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The helper's executables, as the service manager and a person would start them.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/PropertyList.h"
#include "host/Host.h"
#include "host/linux/LinuxMainBundle.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RunProgram.h"

namespace vantrell {
namespace {

const std::string kBuild = VANTRELL_BINARY_DIR;
const std::string kHelper = kBuild + "/Vantrell-PrivilegedTool";
const std::string kOlderHelper = kBuild + "/tests/helper-version-2.4";
const std::string kClasslessHelper = kBuild + "/tests/helper-without-class";
constexpr uid_t kNobody = 65534;

// Executables below a build folder that only root may enter can't be started by anybody else: by descriptor they can.
tests::ProgramResult run(const std::string& helper, std::vector<std::string> arguments, uid_t user = geteuid()) {
  return tests::runProgram(helper, std::move(arguments), user);
}

TEST(HelperProcess, AWordBeginningWithVPrintsTheVersionLineForAnybody) {
  for (const char* word : {"version", "v", "vantrell"}) {
    const auto result = run(kHelper, {word}, geteuid() == 0 ? kNobody : geteuid());
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "2.5 (Build 200203)\n");
    EXPECT_EQ(result.error, "");
  }
}

TEST(HelperProcess, OtherArgumentsEndItSilentlyWith1) {
  const std::vector<std::vector<std::string>> lines{{""}, {"help"}, {"-v"}, {"version", "v"}, {"a", "b", "c"}};
  for (const auto& arguments : lines) {
    const auto result = run(kHelper, arguments);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output + result.error, "");
  }
}

TEST(HelperProcess, AnOrdinaryUserIsToldThatRootIsNeededWithoutANewline) {
  const auto result = run(kHelper, {}, geteuid() == 0 ? kNobody : geteuid());
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "This program needs root privileges.");
}

TEST(HelperProcess, WithoutPrincipalClassItSaysSo) {
  const auto result = run(kClasslessHelper, {});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.error, "Internal implementation error: The principal class is either not set or not implemented.\n");
}

TEST(HelperProcessAsRoot, AnOlderExecutableVersionDoesNotServe) {
  if (geteuid() != 0) GTEST_SKIP() << "the version matters after the check for root";
  EXPECT_EQ(run(kOlderHelper, {"version"}).output, "2.4 (Build 200203)\n");
  const auto result = run(kOlderHelper, {});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output + result.error, "");
}

Dictionary listIn(const std::string& helper, Result<Data> (host::MainBundle::*read)()) {
  auto host = host::makeHost();
  host::LinuxMainBundle bundle(*host.fileSystem, helper);
  const auto data = (bundle.*read)();
  EXPECT_TRUE(data);
  const auto list = propertyListFromData(data.value());
  EXPECT_TRUE(list);
  EXPECT_EQ(list->format, PropertyListFormat::Xml);
  const auto* dictionary = list->root.asDictionary();
  EXPECT_TRUE(dictionary);
  return dictionary ? *dictionary : Dictionary();
}

TEST(EmbeddedLists, TheInformationListHoldsExactlyItsKeys) {
  auto list = listIn(kHelper, &host::MainBundle::informationPropertyList);
  const std::string prefix = VANTRELL_VENDOR_DOMAIN_PREFIX;
  const auto* notice = list.find("NSHumanReadableCopyright");
  ASSERT_TRUE(notice && notice->asString());
  EXPECT_FALSE(notice->asString()->empty());
  const auto* clients = list.find("SMAuthorizedClients");
  ASSERT_TRUE(clients && clients->asArray());
  ASSERT_EQ(clients->asArray()->size(), 1u);
  const auto& requirement = *clients->asArray()->front().asString();
  EXPECT_TRUE(requirement.starts_with("identifier \"" + prefix + ".system.")) << requirement;
  EXPECT_TRUE(requirement.ends_with("\"")) << requirement;
  list.remove("NSHumanReadableCopyright");
  list.remove("SMAuthorizedClients");
  EXPECT_EQ(list, (Dictionary{{"CFBundleIdentifier", prefix + ".system.privilegedtool-lm4"},
                              {"CFBundleInfoDictionaryVersion", "6.0"},
                              {"CFBundleName", "Vantrell-PrivilegedTool"},
                              {"CFBundleShortVersionString", "2.5"},
                              {"CFBundleVersion", "200203"},
                              {"NSPrincipalClass", "QELPrivilegedToolOperationSetLM4"}}));
}

TEST(EmbeddedLists, TheServiceManagersListHoldsExactlyItsKeys) {
  const std::string service = VANTRELL_VENDOR_DOMAIN_PREFIX ".system.privilegedtool-lm4";
  EXPECT_EQ(listIn(kHelper, &host::MainBundle::launchdPropertyList),
            (Dictionary{{"Label", "Vantrell-PrivilegedTool"}, {"MachServices", Dictionary{{service, true}}}}));
}

class HelperServiceAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "the helper serves as root only";
  }
  host::Host host_ = host::makeHost();
};

TEST_F(HelperServiceAsRoot, StartsOnDemandAndEndsWith0WhenTheLastClientLeaves) {
  auto service = host_.clientTransport->spawnService(kHelper);
  ASSERT_TRUE(service);
  auto first = host_.clientTransport->connectToAddress((*service)->address());
  auto second = host_.clientTransport->connectToAddress((*service)->address());
  ASSERT_TRUE(first && second);
  EXPECT_EQ((*first)->getVersionString(), "2.5");
  EXPECT_TRUE((*first)->registerClientWithPID(1));
  EXPECT_TRUE((*second)->registerClientWithPID(2));
  EXPECT_EQ((*first)->unregisterClientWithPID(1), std::nullopt);
  EXPECT_EQ((*second)->getVersionString(), "2.5");
  EXPECT_EQ((*service)->waitForExit(std::chrono::milliseconds(300)), std::nullopt);
  EXPECT_EQ((*second)->unregisterClientWithPID(2), std::nullopt);
  EXPECT_EQ((*service)->waitForExit(std::chrono::seconds(10)), 0);
  EXPECT_TRUE((*second)->waitUntilClosed(std::chrono::seconds(10)));
}

TEST_F(HelperServiceAsRoot, KeepsRunningWithoutAnyRegistration) {
  auto service = host_.clientTransport->spawnService(kHelper);
  ASSERT_TRUE(service);
  {
    auto connection = host_.clientTransport->connectToAddress((*service)->address());
    ASSERT_TRUE(connection);
    EXPECT_EQ((*connection)->getVersionString(), "2.5");
  }
  EXPECT_EQ((*service)->waitForExit(std::chrono::milliseconds(300)), std::nullopt);
}

TEST_F(HelperServiceAsRoot, ServesOnTheMessageBusWhereNoSocketIsPassed) {
  const tests::PrivateBus bus;
  if (!bus.isRunning()) GTEST_SKIP() << "there is no dbus-daemon here";
  const pid_t helper = fork();
  if (helper == 0) {
    execl(kHelper.c_str(), kHelper.c_str(), nullptr);
    _exit(127);
  }
  const std::string service = VANTRELL_VENDOR_DOMAIN_PREFIX ".system.privilegedtool-lm4";
  auto connection = host_.clientTransport->connectToServiceOnBus(service);
  ASSERT_TRUE(connection);
  Result<std::string> version = posixFailure(2);
  for (int i = 0; i < 1000 && !version; ++i) {  // until it has the name
    version = (*connection)->getVersionString();
    if (!version) usleep(10000);
  }
  EXPECT_EQ(version, "2.5");
  EXPECT_TRUE((*connection)->registerClientWithPID(1));
  EXPECT_EQ((*connection)->unregisterClientWithPID(1), std::nullopt);
  int status = 0;
  EXPECT_EQ(waitpid(helper, &status, 0), helper);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace vantrell
