// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <sys/sysctl.h>
#include <sys/types.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/MacKernelSettings.h"
#include "tests/host/KernelSettingsContract.h"

namespace vantrell::tests {
namespace {

constexpr char kVariable[] = "kern.ipc.somaxconn";  // of four bytes

std::optional<std::int32_t> valueOf(const char* name) {
  std::int32_t value = 0;
  std::size_t size = sizeof value;
  if (sysctlbyname(name, &value, &size, nullptr, 0) != 0 || size != sizeof value) return std::nullopt;
  return value;
}

}  // namespace

// The kernel has no variables that are there for tests.
std::vector<KernelSettingsImplementation> kernelSettingsOfThisHost() {
  return {};
}

TEST(MacKernelSettings, KnowsNoVariableWithAnyOtherName) {
  using namespace std::string_literals;
  host::MacKernelSettings kernel;
  const auto before = valueOf(kVariable);
  for (const auto& name : {"kern.no_such_variable"s, ""s, "."s, ".."s, "kern.ipc.somaxconn."s, ".kern.ipc.somaxconn"s,
                           "kern..ipc.somaxconn"s, "kern/ipc/somaxconn"s, "kern.ipc.somaxconn\0"s,
                           "kern.ipc.somaxconn\0x"s, "kern.ipc.somaxconn "s})
    EXPECT_EQ(kernel.set(name, 1), Error::posix(posix::kNoEntry)) << name;
  EXPECT_EQ(valueOf(kVariable), before);
}

TEST(MacKernelSettings, OnlyRootMayChangeThem) {
  if (geteuid() == 0) GTEST_SKIP() << "root may";
  const auto before = valueOf(kVariable);
  ASSERT_TRUE(before);
  EXPECT_EQ(host::MacKernelSettings().set(kVariable, *before), Error::posix(posix::kNotPermitted));
}

TEST(MacKernelSettingsAsRoot, ChangesTheRunningKernel) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may";
  host::MacKernelSettings kernel;
  const auto before = valueOf(kVariable);
  ASSERT_TRUE(before);
  EXPECT_EQ(kernel.set(kVariable, *before + 1), std::nullopt);
  EXPECT_EQ(valueOf(kVariable), *before + 1);
  EXPECT_EQ(kernel.set(kVariable, *before), std::nullopt);
  EXPECT_EQ(valueOf(kVariable), before);
}

TEST(MacKernelSettingsAsRoot, WhatIsForReadingOnlyIsAnError) {
  if (geteuid() != 0) GTEST_SKIP() << "nobody else gets as far as that";
  EXPECT_EQ(host::MacKernelSettings().set("kern.osreldate", 1), Error::posix(posix::kNotPermitted));
}

}  // namespace vantrell::tests
