// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/PropertyList.h"
#include "host/linux/LinuxSystemConfiguration.h"
#include "host/linux/PropertyListFile.h"
#include "tests/host/SystemConfigurationContract.h"
#include "tests/support/KilledAtSystemCall.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace std::string_literals;
using tests::StrictSystemConfigurationContract;
using tests::SystemConfigurationContract;
using tests::SystemConfigurationContractConcurrent;

struct LinuxCandidate final : tests::SystemConfigurationCandidate {
  static constexpr char kFolder[] = "Library/Preferences/SystemConfiguration/";
  tests::TemporaryFolder root;
  host::LinuxSystemConfiguration real{root.path(), root.path("proc")};
  LinuxCandidate() { root.makeFolder(kFolder); }
  host::SystemConfiguration& configuration() override { return real; }
  Dictionary contents(const std::string& identifier) override {
    const auto name = identifier.empty() ? "preferences.plist" : identifier;
    auto file = host::readPropertyListFile(AT_FDCWD, root.path(kFolder + name));
    return file && *file ? (*file)->contents : Dictionary();
  }
  void setContents(const Dictionary& contents) override {
    root.makeFile(kFolder + "preferences.plist"s, textOf(xmlPropertyListFromValue(contents).value()));
  }
};

const auto kLinux = testing::Values(
    tests::SystemConfigurationImplementation{"Linux", [] { return std::make_unique<LinuxCandidate>(); }});
INSTANTIATE_TEST_SUITE_P(, SystemConfigurationContract, kLinux, SystemConfigurationContract::nameOf);
INSTANTIATE_TEST_SUITE_P(, SystemConfigurationContractConcurrent, kLinux, SystemConfigurationContract::nameOf);
INSTANTIATE_TEST_SUITE_P(, StrictSystemConfigurationContract, kLinux, SystemConfigurationContract::nameOf);

struct LinuxSystemConfiguration : testing::Test {
  tests::TemporaryFolder root;
  host::LinuxSystemConfiguration configuration{root.path(), root.path("proc/sys")};
  const std::string folder = "Library/Preferences/SystemConfiguration";
  const std::string file = folder + "/preferences.plist";
  const std::string lockFile = file + "-lock";

  bool set(const std::string& key, const Value& value) {
    const auto session = configuration.open("client", "");
    return session->lock(true) && session->setValue(key, value) && session->applyChanges() &&
           session->commitChanges() && session->unlock();
  }
  std::string contentOf(const std::string& name) const {
    std::ifstream stream(root.path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  std::optional<Dictionary> contents() const {
    auto list = host::readPropertyListFile(AT_FDCWD, root.path(file));
    return list && *list ? std::optional((*list)->contents) : std::nullopt;
  }
  bool exists(const std::string& name) const { return std::filesystem::exists(root.path(name)); }
  struct stat statusOf(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(lstat(root.path(name).c_str(), &status), 0) << name;
    return status;
  }
};

TEST_F(LinuxSystemConfiguration, WritesXmlWhereMacosHasIt) {
  ASSERT_TRUE(set("key", 1));
  EXPECT_TRUE(contentOf(file).starts_with("<?xml"));
  EXPECT_EQ(contents(), (Dictionary{{"key", 1}}));
  EXPECT_EQ(statusOf(file).st_mode, S_IFREG | 0644u);
  EXPECT_FALSE(exists(file + "-new"));
}

TEST_F(LinuxSystemConfiguration, TheLockFileIsThereAsLongAsItIsHeldAndSaysByWhom) {
  const auto session = configuration.open("client", "");
  EXPECT_FALSE(exists(folder));
  ASSERT_TRUE(session->lock(true));
  EXPECT_EQ(contentOf(lockFile), std::to_string(getpid()) + "\n");
  EXPECT_EQ(statusOf(lockFile).st_mode, S_IFREG | 0644u);
  EXPECT_TRUE(session->unlock());
  EXPECT_FALSE(exists(lockFile));
}

TEST_F(LinuxSystemConfiguration, ALockFileThatAKilledOneLeftIsTakenOver) {
  root.makeFolder(folder);
  root.makeFile(lockFile, "a very long process identifier\n");
  const auto session = configuration.open("client", "");
  ASSERT_TRUE(session->lock(false));
  EXPECT_EQ(contentOf(lockFile), std::to_string(getpid()) + "\n");
}

TEST_F(LinuxSystemConfiguration, OtherProgramsLocksCount) {
  root.makeFolder(folder);
  const int other = open(root.makeFile(lockFile).c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(flock(other, LOCK_EX), 0);
  EXPECT_FALSE(configuration.open("client", "")->lock(false));
  // One who waits for a file that is removed by then looks for the new one.
  std::filesystem::remove(root.path(lockFile));
  const auto session = configuration.open("client", "");
  EXPECT_TRUE(session->lock(false));
  close(other);
  EXPECT_TRUE(exists(lockFile));
}

TEST_F(LinuxSystemConfiguration, KeepsModeOfTheFile) {
  root.makeFolder(folder);
  root.makeFile(file, "{ other = 1; }");
  ASSERT_EQ(chmod(root.path(file).c_str(), 0640), 0);
  ASSERT_TRUE(set("key", 1));
  EXPECT_EQ(statusOf(file).st_mode, S_IFREG | 0640u);
  EXPECT_EQ(contents(), (Dictionary{{"key", 1}, {"other", "1"}}));
}

TEST_F(LinuxSystemConfiguration, WhatIsNoPropertyListIsLeftAlone) {
  root.makeFolder(folder);
  for (const std::string content : {"{ broken", "(an, array)", "", "bplist00garbage"}) {
    root.makeFile(file, content);
    EXPECT_FALSE(set("key", 1)) << content;
    EXPECT_FALSE(configuration.open("client", "")->networkService("service"));
    EXPECT_EQ(contentOf(file), content);
    EXPECT_FALSE(exists(lockFile));
  }
  std::filesystem::remove(root.path(file));
  root.makeLink(file, root.makeFile("target", "{ other = 1; }"));
  EXPECT_FALSE(set("key", 1));
  EXPECT_EQ(contentOf("target"), "{ other = 1; }");
}

TEST_F(LinuxSystemConfiguration, WhatXmlCannotHoldIsNotCommitted) {
  ASSERT_TRUE(set("key", 1));
  EXPECT_FALSE(set("other", "\x01"));
  EXPECT_FALSE(set("other", Value()));
  EXPECT_EQ(contents(), (Dictionary{{"key", 1}}));
  EXPECT_FALSE(exists(lockFile));
}

TEST_F(LinuxSystemConfiguration, NamesOfLocksAndNewFilesAreNoConfigurations) {
  for (const auto* identifier : {"preferences.plist-lock", "preferences.plist-new", "-lock", "x-new"})
    EXPECT_EQ(configuration.open("client", identifier), nullptr) << identifier;
  EXPECT_FALSE(configuration.open("client", std::string(300, 'x'))->lock(true));
}

TEST_F(LinuxSystemConfiguration, RemovesWhatWasLeftOfACommit) {
  root.makeFolder(folder);
  root.makeFile(file + "-new", "half a fi");
  ASSERT_TRUE(set("key", 1));
  EXPECT_EQ(contents(), (Dictionary{{"key", 1}}));
  EXPECT_FALSE(exists(file + "-new"));
}

struct Ipv6SwitchInFolder : LinuxSystemConfiguration {
  bool enable(bool enabled, const Value& device) {
    EXPECT_TRUE(
        set("NetworkServices", Dictionary{{"service", Dictionary{{"IPv6", Dictionary()},
                                                                 {"Interface", Dictionary{{"DeviceName", device}}}}}}));
    const auto session = configuration.open("client", "");
    return session->lock(true) && session->networkService("service")->ipv6Protocol()->setEnabled(enabled) &&
           session->applyChanges();
  }
  void makeDevice(const std::string& name) {
    root.makeFolder("proc/sys/net/ipv6/conf/" + name);
    root.makeFile(switchOf(name), "9\n");
  }
  static std::string switchOf(const std::string& name) { return "proc/sys/net/ipv6/conf/" + name + "/disable_ipv6"; }
};

TEST_F(Ipv6SwitchInFolder, IsAppliedToTheServicesDevice) {
  for (const std::string device : {"en0", "eth0.100", "a-name_of@15+ch"}) {
    makeDevice(device);
    EXPECT_TRUE(enable(false, device));
    EXPECT_EQ(contentOf(switchOf(device)), "1\n");
    EXPECT_TRUE(enable(true, device));
    EXPECT_EQ(contentOf(switchOf(device)), "0\n");
  }
}

TEST_F(Ipv6SwitchInFolder, IsNotAppliedBeforeItIsAskedFor) {
  makeDevice("en0");
  ASSERT_TRUE(enable(true, "en0"));
  const auto session = configuration.open("client", "");
  ASSERT_TRUE(session->lock(true));
  EXPECT_TRUE(session->networkService("service")->ipv6Protocol()->setEnabled(false));
  EXPECT_TRUE(session->commitChanges());
  EXPECT_EQ(contentOf(switchOf("en0")), "0\n");
}

TEST_F(Ipv6SwitchInFolder, DevicesThatAreNotThereHaveNothingToBeSwitched) {
  EXPECT_TRUE(enable(false, "en7"));
  EXPECT_TRUE(enable(false, 7));
  EXPECT_TRUE(enable(false, ""));
}

TEST_F(Ipv6SwitchInFolder, NamesThatAreNoDevicesFailToApply) {
  makeDevice("all");
  makeDevice("default");
  makeDevice("..");
  for (const auto& device :
       {"all"s, "default"s, "."s, ".."s, "../../x"s, "a/b"s, "a b"s, "a:1"s, "a\nb"s, "sixteen-letters-"s})
    EXPECT_FALSE(enable(false, device)) << device;
  EXPECT_EQ(contentOf(switchOf("all")), "9\n");
  EXPECT_EQ(contentOf(switchOf("default")), "9\n");
}

TEST_F(Ipv6SwitchInFolder, AFailureOfTheKernelFailsToApply) {
  root.makeFolder(switchOf("en0"));  // can't be written
  EXPECT_FALSE(enable(false, "en0"));
}

TEST_F(LinuxSystemConfiguration, AKillAtAnySystemCallLeavesTheOldOrTheNewFileWhole) {
  const std::string text(100'000, 'x');
  const Dictionary old{{"key", "old"}, {"text", text}};
  const Dictionary changed{{"key", "new"}, {"text", text}};
  ASSERT_TRUE(set("text", text));
  int stop = 0;
  int newOnes = 0;
  for (auto end = tests::ChildEnd::Killed; end != tests::ChildEnd::Succeeded;) {
    ASSERT_LT(++stop, 1000);
    ASSERT_TRUE(set("key", "old")) << stop;  // also gets over what the one before left behind
    end = tests::runKilledAtSystemCall(stop, [&] { return set("key", "new"); });
    if (end == tests::ChildEnd::NotTraceable) GTEST_SKIP() << "Child processes can't be traced here.";
    ASSERT_NE(end, tests::ChildEnd::Failed) << stop;
    ASSERT_TRUE(contents()) << stop;
    ASSERT_TRUE(contents() == old || contents() == changed) << stop;
    newOnes += contents() == changed;
  }
  EXPECT_EQ(contents(), changed);
  EXPECT_GT(stop, 30);
  EXPECT_GT(newOnes, 1);
  EXPECT_LT(newOnes, stop);
}

struct LinuxSystemConfigurationAsRoot : LinuxSystemConfiguration {
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "Only root can give files away.";
  }
};

TEST_F(LinuxSystemConfigurationAsRoot, KeepsOwnerAndGroupOfTheFile) {
  root.makeFolder(folder);
  root.makeFile(file, "{ other = 1; }");
  ASSERT_EQ(chown(root.path(file).c_str(), 12, 34), 0);
  ASSERT_TRUE(set("key", 1));
  EXPECT_EQ(statusOf(file).st_uid, 12u);
  EXPECT_EQ(statusOf(file).st_gid, 34u);
}

}  // namespace
}  // namespace vantrell
