// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "tests/host/FirmwareVariablesContract.h"
#include "tests/support/FakeFirmwareVariables.h"

namespace vantrell::tests {
namespace {

using namespace std::string_literals;

struct FakeCandidate final : FirmwareVariablesCandidate {
  FakeFirmwareVariables fake;
  host::FirmwareVariables& firmware() override { return fake; }
  void removeOptions() override { fake.hasOptions = false; }
};

TEST_P(FirmwareVariablesContract, KeepsTextsAndDataApart) {
  EXPECT_EQ(candidate->firmware().connect(), host::kDeviceSuccess);
  for (const Value& stored :
       {Value("text"), Value("x"), Value("\xC3\xA4 und \xF0\x9F\x98\x80"), Value(Data{0x41, 0x42}), Value(Data{0x00}),
        Value(Data{1, 2, 3}), Value(Data{'t', 'e', 'x', 't'})}) {
    EXPECT_EQ(set("name", stored), host::kDeviceSuccess);
    EXPECT_EQ(value("name"), stored);
  }
}

TEST_P(FirmwareVariablesContract, HasNoValueForWhatThereIsNot) {
  EXPECT_EQ(value("name"), std::nullopt);
  ASSERT_EQ(set("name", "text"), host::kDeviceSuccess);
  EXPECT_EQ(value("nam"), std::nullopt);
  EXPECT_EQ(value("NAME"), std::nullopt);
}

TEST_P(FirmwareVariablesContract, RefusesNamesThatNoVariableCanHave) {
  for (const auto& name : {""s, "a/b"s, "../name"s, "/name"s, "a\0b"s}) {
    EXPECT_EQ(set(name, "text"), static_cast<host::DeviceReturnCode>(0xE00002C2U)) << name;
    EXPECT_EQ(value(name), std::nullopt) << name;
  }
}

TEST_P(FirmwareVariablesContract, MayBeMissing) {
  candidate->removeOptions();
  EXPECT_EQ(candidate->firmware().connect(), host::kDeviceSuccess);
  EXPECT_EQ(candidate->firmware().options(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(, FirmwareVariablesContract,
                         testing::Values(FirmwareVariablesImplementation{
                             "Fake", [] { return std::make_unique<FakeCandidate>(); }}),
                         FirmwareVariablesContract::nameOf);

}  // namespace
}  // namespace vantrell::tests
