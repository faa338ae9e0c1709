// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "foundation/Date.h"
#include "foundation/PosixCodes.h"
#include "system/SettingErrors.h"
#include "system/SystemSettingOperations.h"
#include "tests/support/FakeFirmwareVariables.h"

namespace vantrell {
namespace {

const Error kInvalid = Error::posix(posix::kInvalidArgument);

TEST(ModifyNvram, NewVariablesAreDataIfTheyLookLikeThatElseTexts) {
  tests::FakeFirmwareVariables firmware;
  const std::pair<const char*, Value> kCases[] = {
      {"%41%42", Data{0x41, 0x42}}, {"%4", "%4"},       {"true", "true"}, {"42", "42"}, {"", ""}, {"%100", "%100"},
      {"boot text", "boot text"},   {"%41", Data{0x41}}};
  for (const auto& [text, expected] : kCases) {
    firmware.variables.clear();
    EXPECT_EQ(modifyNvram({"name", text}, firmware), std::nullopt) << text;
    EXPECT_EQ(firmware.variables, (tests::FakeFirmwareVariables::Variables{{"name", expected}})) << text;
  }
}

TEST(ModifyNvram, ExistingVariablesKeepTheirType) {
  struct Case {
    Value before;
    const char* text;
    std::optional<Value> after;  // nothing: refused
  };
  const Case kCases[] = {
      {"old", "%41%42", "%41%42"},
      {"old", "%4", "%4"},
      {"old", "", ""},
      {Data{1}, "%41%42", Data{0x41, 0x42}},
      {Data{1}, "%4", std::nullopt},
      {Data{1}, "text", std::nullopt},
      {Data{1}, "", std::nullopt},
      {7, "42", 42},
      {7, "-1x", -1},
      {7, "text", 0},
      {7u, "42", 42},
      {true, "false", false},
      {false, "true", true},
      {true, "TRUE", std::nullopt},
      {true, "1", std::nullopt},
      {Array{}, "text", std::nullopt},
      {Dictionary{}, "text", std::nullopt},
      {Date(), "text", std::nullopt},
      {Value(), "text", std::nullopt},
  };
  for (const auto& [before, text, after] : kCases) {
    tests::FakeFirmwareVariables firmware;
    firmware.variables.emplace("name", before);
    EXPECT_EQ(modifyNvram({"name", text}, firmware), after ? std::nullopt : ErrorOrNil(kInvalid)) << text;
    const auto& stored = firmware.variables.at("name");
    EXPECT_EQ(stored, after.value_or(before)) << text;
    EXPECT_EQ(stored.className(), before.className()) << text;
    if (stored.asNumber() && after) {
      EXPECT_EQ(stored.asNumber()->kind() == Number::Kind::Boolean, before.asNumber()->kind() == Number::Kind::Boolean);
    }
    EXPECT_EQ(firmware.changes, after ? 1 : 0) << text;
  }
}

TEST(ModifyNvram, RefusesAnEmptyNameAndMissingArguments) {
  tests::FakeFirmwareVariables firmware;
  firmware.connectCode = -1;  // not so much as asked
  for (const Array& arguments : {Array{"", "text"}, Array{"name"}, Array{}, Array{"name", 1}, Array{1, "text"}})
    EXPECT_EQ(modifyNvram(arguments, firmware), kInvalid);
}

TEST(ModifyNvram, AMachineWithoutVariablesIsLeftAloneWithSuccess) {
  tests::FakeFirmwareVariables firmware;
  firmware.hasOptions = false;
  EXPECT_EQ(modifyNvram({"name", "text"}, firmware), std::nullopt);
  EXPECT_EQ(firmware.changes, 0);
}

TEST(ModifyNvram, ReportsTheReturnCodes) {
  tests::FakeFirmwareVariables firmware;
  firmware.setCode = static_cast<host::DeviceReturnCode>(0xE00002C1U);
  EXPECT_EQ(modifyNvram({"name", "text"}, firmware), setting_error::nvramNotModified(-536870207));
  firmware.connectCode = 268435459;
  EXPECT_EQ(modifyNvram({"name", "text"}, firmware), setting_error::nvramNotModified(268435459));
  firmware.hasOptions = false;
  EXPECT_EQ(modifyNvram({"name", "text"}, firmware), setting_error::nvramNotModified(268435459));
  EXPECT_TRUE(firmware.variables.empty());
}

}  // namespace
}  // namespace vantrell
