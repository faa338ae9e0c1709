// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The operations at work on this machine: on what is the test's own, or in a network of its own.

#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "foundation/PropertyList.h"
#include "host/linux/LinuxFirmwareVariables.h"
#include "host/linux/LinuxKernelSettings.h"
#include "host/linux/LinuxSystemConfiguration.h"
#include "host/posix/PosixProcessSignals.h"
#include "host/posix/PosixStorageDevices.h"
#include "system/SettingErrors.h"
#include "system/SystemSettingOperations.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/PrivatePreferences.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace std::string_literals;

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

struct RealSettingsAsRoot : testing::Test {
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "Only root may change settings of the system.";
  }

  /// Runs `test` in a thread with a network of its own; programs that it starts share it.
  static void inOwnNetwork(const std::function<void()>& test) {
    bool isPossible = false;
    std::thread([&] {
      isPossible = unshare(CLONE_NEWNET) == 0;
      if (isPossible) test();
    }).join();
    if (!isPossible) GTEST_SKIP() << "This system lets nobody make a network of its own.";
  }

  tests::TemporaryFolder root;
};

TEST_F(RealSettingsAsRoot, AKernelVariableIsSetAndSetBack) {
  inOwnNetwork([] {
    host::LinuxKernelSettings kernel;
    constexpr char kPath[] = "/proc/sys/net/ipv4/ip_default_ttl";
    const auto before = contentOf(kPath);
    EXPECT_EQ(modifyKernelsetting({"net.ipv4.ip_default_ttl", 77}, kernel), std::nullopt);
    EXPECT_EQ(contentOf(kPath), "77\n");
    EXPECT_EQ(modifyKernelsetting({"net.ipv4.ip_default_ttl", std::stoi(before)}, kernel), std::nullopt);
    EXPECT_EQ(contentOf(kPath), before);
    EXPECT_EQ(modifyKernelsetting({"net.ipv4.ip_default_ttl", -1}, kernel), Error::posix(posix::kInvalidArgument));
    EXPECT_EQ(modifyKernelsetting({"net/ipv4/ip_default_ttl", 1}, kernel), Error::posix(posix::kNoEntry));
  });
}

TEST_F(RealSettingsAsRoot, AFirmwareVariableIsMadeAndChanged) {
  host::LinuxFirmwareVariables firmware(root.path());
  const auto guid = std::string(host::kVendorVariableGuid);
  EXPECT_EQ(modifyNvram({"data", "%41%42"}, firmware), std::nullopt);
  EXPECT_EQ(contentOf(root.path("data-" + guid)), "\x07\0\0\0AB"s);
  EXPECT_EQ(modifyNvram({"data", "%43"}, firmware), std::nullopt);
  EXPECT_EQ(contentOf(root.path("data-" + guid)), "\x07\0\0\0C"s);
  EXPECT_EQ(modifyNvram({"data", "text"}, firmware), Error::posix(posix::kInvalidArgument));
  for (const auto* text : {"%4", "%41%42", "other"}) {  // a text from the first on
    EXPECT_EQ(modifyNvram({"text", text}, firmware), std::nullopt);
    EXPECT_EQ(contentOf(root.path("text-" + guid)), "\x07\0\0\0"s + text + '\0');
  }
  EXPECT_EQ(modifyNvram({"a/b", "text"}, firmware), setting_error::nvramNotModified(-536870206));
  host::LinuxFirmwareVariables none(root.path("missing"));
  EXPECT_EQ(modifyNvram({"data", "%41"}, none), std::nullopt);
}

TEST_F(RealSettingsAsRoot, PreferencesOfOthersAreChanged) {
  tests::PrivatePreferences files;
  const auto modify = [&](const char* user, const char* host, const char* value) {
    return modifyPreferences({"key", "com.app", user, host, value}, files.preferences);
  };
  EXPECT_EQ(modify("kCFPreferencesAnyUser", "kCFPreferencesCurrentHost", "(a, b)"), std::nullopt);
  EXPECT_EQ(files.contentsOf("Library/Preferences/com.app.plist"), (Dictionary{{"key", Array{"a", "b"}}}));
  EXPECT_EQ(modify("alice", "kCFPreferencesAnyHost", "<plist><true/></plist>"), std::nullopt);
  EXPECT_EQ(files.contentsOf("home/alice/Library/Preferences/com.app.plist"), (Dictionary{{"key", true}}));
  EXPECT_EQ(modify("kCFPreferencesAnyUser", "kCFPreferencesCurrentHost", ""), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(files.root.path("Library/Preferences/com.app.plist")));
  EXPECT_EQ(modify("bob", "kCFPreferencesAnyHost", "x"), setting_error::preferencesNotUpdated());
}

TEST_F(RealSettingsAsRoot, TheSystemConfigurationIsChanged) {
  host::LinuxSystemConfiguration configuration(root.path());
  const auto file = root.path("Library/Preferences/SystemConfiguration/preferences.plist");
  EXPECT_EQ(modifySysconf({"client", "", "key", "{ a = b; }"}, configuration), std::nullopt);
  EXPECT_EQ(propertyListFromData(bytesOf(contentOf(file))).value().root,
            Value(Dictionary{{"key", Dictionary{{"a", "b"}}}}));
  EXPECT_EQ(modifySysconf({"client", "", "key", ""}, configuration), std::nullopt);
  EXPECT_EQ(propertyListFromData(bytesOf(contentOf(file))).value().root, Value(Dictionary()));
  EXPECT_EQ(modifySysconf({"client", "../preferences.plist", "key", "x"}, configuration),
            setting_error::systemConfigurationNotUpdated());
}

TEST_F(RealSettingsAsRoot, Ipv6OfALiveInterfaceIsSwitchedOffAndOn) {
  if (!std::filesystem::exists("/proc/sys/net/ipv6/conf")) GTEST_SKIP() << "This kernel has no IPv6.";
  inOwnNetwork([this] {
    std::string device = "vantrell0";
    const auto result = tests::runProgram("/usr/sbin/ip", {"link", "add", device, "type", "veth"});
    if (result.status != 0) device = "lo";  // where there are no such interfaces
    const auto path = "/proc/sys/net/ipv6/conf/" + device + "/disable_ipv6";
    root.makeFolder("Library/Preferences/SystemConfiguration");
    const auto file =
        root.makeFile("Library/Preferences/SystemConfiguration/preferences.plist",
                      "{ NetworkServices = { service = { IPv6 = { ConfigMethod = Automatic; }; Interface = "
                      "{ DeviceName = " +
                          device + "; }; }; }; }");
    host::LinuxSystemConfiguration configuration(root.path());
    tests::RecordingLog log;
    const Log sysLog(log);
    ASSERT_EQ(contentOf(path), "0\n");
    EXPECT_EQ(enableIpvsix({"client", "service", 0}, configuration, sysLog), std::nullopt);
    EXPECT_EQ(contentOf(path), "1\n");
    EXPECT_NE(contentOf(file).find("__INACTIVE__"), std::string::npos);
    EXPECT_EQ(enableIpvsix({"client", "service", 1}, configuration, sysLog), std::nullopt);
    EXPECT_EQ(contentOf(path), "0\n");
    EXPECT_EQ(contentOf(file).find("__INACTIVE__"), std::string::npos);
    EXPECT_TRUE(log.entries().empty());
    EXPECT_EQ(enableIpvsix({"client", "other", 1}, configuration, sysLog), setting_error::preferencesNotUpdated());
    EXPECT_TRUE(log.contains(host::LogLevel::Error, "Network service with identifier 'other' doesn't exist."));
  });
}

TEST_F(RealSettingsAsRoot, AChildIsSignalled) {
  host::PosixProcessSignals signals;
  const pid_t child = fork();
  if (child == 0) {
    for (;;) pause();
  }
  EXPECT_EQ(signalProcess({child, 0}, signals), std::nullopt);
  EXPECT_EQ(signalProcess({child, 9999}, signals), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(signalProcess({-child, SIGTERM}, signals), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(signalProcess({child, SIGTERM}, signals), std::nullopt);
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
  EXPECT_EQ(signalProcess({child, 0}, signals), Error::posix(3));
}

TEST_F(RealSettingsAsRoot, BlocksOfADeviceAreErased) {
  host::PosixStorageDevices storage;
  const auto file = root.makeFile("disk", std::string(8 * 512, 'x'));
  try {
    const tests::LoopDevice loop(file);
    EXPECT_EQ(eraseDiskblocks({loop.name(), 3}, storage), std::nullopt);
    EXPECT_EQ(contentOf(loop.path()), std::string(3 * 512, '\0') + std::string(5 * 512, 'x'));
    EXPECT_EQ(eraseDiskblocks({loop.name(), 9}, storage), Error::posix(posix::kNoSpace));
    EXPECT_EQ(contentOf(loop.path()), std::string(8 * 512, '\0'));
  } catch (const std::system_error& error) {
    GTEST_SKIP() << "There is no loop device to be had here: " << error.what();
  }
}

TEST_F(RealSettingsAsRoot, BlocksOfAFileBelowDevAreErased) {
  if (!std::filesystem::is_directory("/dev/shm")) GTEST_SKIP() << "There is no /dev/shm here.";
  const auto name = "vantrell-blocks-" + std::to_string(getpid());
  const auto path = "/dev/shm/" + name;
  host::PosixStorageDevices storage;
  EXPECT_EQ(eraseDiskblocks({"shm/" + name, 0}, storage), std::nullopt);
  EXPECT_EQ(eraseDiskblocks({"shm/" + name, 1}, storage), Error::posix(posix::kNoEntry));
  EXPECT_FALSE(std::filesystem::exists(path));
  std::ofstream(path) << std::string(1500, 'x');
  EXPECT_EQ(eraseDiskblocks({"shm/" + name, 2}, storage), std::nullopt);
  EXPECT_EQ(contentOf(path), std::string(1024, '\0') + std::string(476, 'x'));
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace vantrell
