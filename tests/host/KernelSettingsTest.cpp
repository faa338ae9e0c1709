// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "tests/host/KernelSettingsContract.h"
#include "tests/support/FakeKernelSettings.h"

namespace vantrell {
namespace {

struct FakeCandidate final : tests::KernelSettingsCandidate {
  tests::FakeKernelSettings kernel{{{"first", 0}, {"group.second", 0}}};
  host::KernelSettings& settings() override { return kernel; }
  std::int64_t valueOf(const std::string& name) override { return kernel.variables().at(name); }
};

std::vector<tests::KernelSettingsImplementation> implementations() {
  auto all = tests::kernelSettingsOfThisHost();
  all.push_back({"Fake", [] { return std::make_unique<FakeCandidate>(); }});
  return all;
}

struct KernelSettingsContract : testing::TestWithParam<tests::KernelSettingsImplementation> {
  std::unique_ptr<tests::KernelSettingsCandidate> candidate = GetParam().make();
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

INSTANTIATE_TEST_SUITE_P(, KernelSettingsContract, testing::ValuesIn(implementations()),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace vantrell
