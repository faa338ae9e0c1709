// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <thread>

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/LinuxKernelSettings.h"
#include "tests/support/FakeKernelSettings.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

std::string firstLineOf(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

/// Kernel settings with the two variables "first" (0) and "group.second" (0), and a look at their values.
struct Candidate {
  virtual ~Candidate() = default;
  virtual host::KernelSettings& settings() = 0;
  virtual std::int64_t valueOf(const std::string& name) = 0;
};

struct FakeCandidate final : Candidate {
  tests::FakeKernelSettings kernel{{{"first", 0}, {"group.second", 0}}};
  host::KernelSettings& settings() override { return kernel; }
  std::int64_t valueOf(const std::string& name) override { return kernel.variables().at(name); }
};

struct LinuxCandidate final : Candidate {
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

struct Implementation {
  const char* name;
  std::function<std::unique_ptr<Candidate>()> make;
  friend void PrintTo(const Implementation& implementation, std::ostream* stream) { *stream << implementation.name; }
};

struct KernelSettingsContract : testing::TestWithParam<Implementation> {
  std::unique_ptr<Candidate> candidate = GetParam().make();
};

TEST_P(KernelSettingsContract, SetsTheVariableOfThatName) {
  EXPECT_EQ(candidate->settings().set("first", 42), std::nullopt);
  EXPECT_EQ(candidate->valueOf("first"), 42);
  EXPECT_EQ(candidate->settings().set("group.second", -1), std::nullopt);
  EXPECT_EQ(candidate->valueOf("group.second"), -1);
  EXPECT_EQ(candidate->valueOf("first"), 42);
  using Limits = std::numeric_limits<std::int64_t>;
  for (const auto value : {Limits::min(), Limits::max()}) {
    EXPECT_EQ(candidate->settings().set("first", value), std::nullopt);
    EXPECT_EQ(candidate->valueOf("first"), value);
  }
}

TEST_P(KernelSettingsContract, KnowsNoVariableWithAnyOtherName) {
  using namespace std::string_literals;
  for (const auto& name :
       {"third"s, ""s, "."s, ".."s, "first."s, ".first"s, "group..second"s, "group/second"s, "./first"s, "/first"s,
        "group.second."s, "first\0"s, "first\0x"s, "group.\0second"s, "...first"s, "first "s, std::string(5000, 'x')}) {
    const auto error = candidate->settings().set(name, 1);
    ASSERT_TRUE(error) << name;
    EXPECT_TRUE(error->isPosix(name.size() > 4096 && error->code() != 2 ? posix::kNameTooLong : posix::kNoEntry))
        << name;
  }
  EXPECT_EQ(candidate->valueOf("first"), 0);
  EXPECT_EQ(candidate->valueOf("group.second"), 0);
}

INSTANTIATE_TEST_SUITE_P(, KernelSettingsContract,
                         testing::Values(Implementation{"Fake", [] { return std::make_unique<FakeCandidate>(); }},
                                         Implementation{"Linux", [] { return std::make_unique<LinuxCandidate>(); }}),
                         [](const auto& info) { return std::string(info.param.name); });

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
}  // namespace vantrell
