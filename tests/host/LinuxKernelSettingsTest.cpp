// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/LinuxKernelSettings.h"
#include "tests/host/KernelSettingsContract.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

std::string firstLineOf(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

struct LinuxCandidate final : tests::KernelSettingsCandidate {
  tests::TemporaryFolder folder;
  host::LinuxKernelSettings kernel{folder.path()};
  LinuxCandidate() {
    folder.makeFolder("group");
    folder.makeFile("first", "0\n");
    folder.makeFile("group/second", "0\n");
  }
  host::KernelSettings& settings() override { return kernel; }
  std::int64_t valueOf(const std::string& name) override {
    return std::stoll(firstLineOf(folder.path(name == "first" ? "first" : "group/second")));
  }
};

/// Runs `test` in a thread with a network of its own; the settings of the machine's are out of its reach.
void inOwnNetwork(const std::function<void()>& test) {
  if (geteuid() != 0) GTEST_SKIP() << "Only root can make a network of its own.";
  bool isPossible = false;
  std::thread([&] {
    isPossible = unshare(CLONE_NEWNET) == 0;
    if (isPossible) test();
  }).join();
  if (!isPossible) GTEST_SKIP() << "This system lets nobody make a network of its own.";
}

TEST(LinuxKernelSettingsAsRoot, ChangesTheRunningKernel) {
  inOwnNetwork([] {
    constexpr char kPath[] = "/proc/sys/net/ipv4/ip_default_ttl";
    host::LinuxKernelSettings kernel;
    const auto before = std::stoll(firstLineOf(kPath));
    const auto other = before == 65 ? 66 : 65;
    EXPECT_EQ(kernel.set("net.ipv4.ip_default_ttl", other), std::nullopt);
    EXPECT_EQ(firstLineOf(kPath), std::to_string(other));
    EXPECT_EQ(kernel.set("net.ipv4.ip_default_ttl", before), std::nullopt);
    EXPECT_EQ(firstLineOf(kPath), std::to_string(before));
  });
}

TEST(LinuxKernelSettingsAsRoot, ReportsTheKernelsErrors) {
  inOwnNetwork([] {
    host::LinuxKernelSettings kernel;
    const auto before = firstLineOf("/proc/sys/net/ipv4/ip_default_ttl");
    EXPECT_EQ(kernel.set("net.ipv4.ip_default_ttl", 70000), Error::posix(posix::kInvalidArgument));  // 255 at most
    EXPECT_EQ(firstLineOf("/proc/sys/net/ipv4/ip_default_ttl"), before);
    EXPECT_EQ(kernel.set("net.ipv4", 1), Error::posix(posix::kIsDirectory));
    EXPECT_EQ(kernel.set("kernel.osrelease", 1), Error::posix(posix::kAccessDenied));
    EXPECT_EQ(kernel.set("net.ipv4.no_such_variable", 1), Error::posix(posix::kNoEntry));
    EXPECT_EQ(kernel.set("kernel.osrelease.x", 1), Error::posix(posix::kNotDirectory));
  });
}

}  // namespace

std::vector<tests::KernelSettingsImplementation> tests::kernelSettingsOfThisHost() {
  return {{"Linux", [] { return std::make_unique<LinuxCandidate>(); }}};
}

}  // namespace vantrell
