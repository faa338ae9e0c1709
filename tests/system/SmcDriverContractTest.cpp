// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "system/QELSystemManagementController.h"
#include "system/SimulatedSmc.h"
#include "tests/support/RecordingLog.h"
#include "tests/system/SmcDriverContract.h"

namespace vantrell::tests {
namespace {

using host::SmcRecord;
namespace smc_command = host::smc_command;
namespace smc_result = host::smc_result;

SmcDriverCandidate makeSimulated() {
  const auto readOnly = SimulatedSmc::readOnlyKey;
  const auto readWrite = SimulatedSmc::readWriteKey;
  return {nullptr, std::make_unique<SimulatedSmc>(std::vector<SimulatedSmc::Key>{
                       readWrite("FS! ", "ui16", {0, 0}), SimulatedSmc::writeOnlyKey("KPPW", "ui16", {0, 0}),
                       readOnly("RBr ", "ch8*", {'b', 'r'}), readWrite("F0Mn", "fpe2", {0x1F, 0x40}),
                       readOnly("FNum", "ui8", {2})})};
}
INSTANTIATE_TEST_SUITE_P(All, SmcDriverContract, testing::Values(SmcDriverImplementation{"Simulated", makeSimulated}),
                         SmcDriverContract::nameOf);

TEST_P(SmcDriverContract, TellsTheKeysInAscendingOrder) {
  const char* const kKeys[] = {"#KEY", "F0Mn", "FNum", "FS! ", "KPPW", "RBr "};
  for (std::uint32_t index = 0; index < std::size(kKeys); ++index) {
    const auto answer = call({.command = smc_command::kKeyAtIndex, .data32 = index});
    EXPECT_EQ(answer.result, smc_result::kSuccess);
    EXPECT_EQ(stringFromSMCKey(answer.key), kKeys[index]);
  }
}

TEST_P(SmcDriverContract, KnowsNoKeyBeyondTheLast) {
  for (const std::uint32_t index : {6U, 7U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
    const auto answer = call({.command = smc_command::kKeyAtIndex, .data32 = index});
    EXPECT_NE(answer.result, smc_result::kSuccess);
    EXPECT_EQ(answer.key, 0U);
  }
}

TEST_P(SmcDriverContract, CountsTheKeysUnderAKeyOfItsOwn) {
  EXPECT_EQ(info("#KEY").keyInfo.dataType, smcCode("ui32"));
  EXPECT_EQ(info("#KEY").keyInfo.dataSize, 4U);
  EXPECT_EQ(read("#KEY", 4).bytes[3], 6);
  EXPECT_EQ(read("#KEY", 4).bytes[0], 0);
}

TEST_P(SmcDriverContract, TellsTypeAndSize) {
  EXPECT_EQ(info("F0Mn").keyInfo.dataType, smcCode("fpe2"));
  EXPECT_EQ(info("F0Mn").keyInfo.dataSize, 2U);
  EXPECT_EQ(info("FNum").keyInfo.dataType, smcCode("ui8\0")) << "three characters and a zero byte";
  EXPECT_EQ(info("KPPW").keyInfo.dataSize, 2U) << "write-only keys have a size, too";
  EXPECT_EQ(info("F0Mn").result, smc_result::kSuccess);
}

TEST_P(SmcDriverContract, ReadsValues) {
  const auto speed = read("F0Mn", 2);
  EXPECT_EQ(speed.result, smc_result::kSuccess);
  EXPECT_EQ(speed.bytes[0], 0x1F);
  EXPECT_EQ(speed.bytes[1], 0x40);
  EXPECT_EQ(speed.bytes[2], 0);
  EXPECT_EQ(read("RBr ", 2).bytes[1], 'r');
}

TEST_P(SmcDriverContract, TellsMissingKeysFromThoseThatItRefuses) {
  EXPECT_EQ(info("none").result, smc_result::kKeyNotFound);
  EXPECT_EQ(read("none", 2).result, smc_result::kKeyNotFound);
  EXPECT_EQ(write("none", {1, 2}).result, smc_result::kKeyNotFound);
  for (const auto result : {read("KPPW", 2).result, write("FNum", {1}).result, write("RBr ", {1, 2}).result}) {
    EXPECT_NE(result, smc_result::kSuccess);
    EXPECT_NE(result, smc_result::kKeyNotFound);
  }
}

TEST_P(SmcDriverContract, RefusesAnotherSize) {
  EXPECT_NE(read("F0Mn", 1).result, smc_result::kSuccess);
  EXPECT_NE(read("F0Mn", 0xFFFFFFFF).result, smc_result::kSuccess);
  EXPECT_NE(write("F0Mn", {1}).result, smc_result::kSuccess);
  EXPECT_NE(write("F0Mn", {1, 2, 3}).result, smc_result::kSuccess);
  EXPECT_EQ(read("F0Mn", 2).bytes[1], 0x40) << "unchanged";
}

TEST_P(SmcDriverContract, RefusesOtherCommands) {
  for (const int command : {0, 1, 7, 255}) {
    const auto answer = call({.key = smcCode("F0Mn"), .command = static_cast<std::uint8_t>(command)});
    EXPECT_NE(answer.result, smc_result::kSuccess);
    EXPECT_NE(answer.result, smc_result::kKeyNotFound);
  }
}

TEST_P(SmcDriverContract, TakesCallsOnlyWhileTheUserClientIsOpen) {
  const auto connection = std::move(driver_.connect().value());
  const SmcRecord request{.key = smcCode("FNum"), .command = smc_command::kKeyInfo};
  SmcRecord answer;
  EXPECT_NE(connection->call(request, answer), host::kSmcSuccess);
  EXPECT_EQ(connection->openUserClient(), host::kSmcSuccess);
  EXPECT_EQ(connection->call(request, answer), host::kSmcSuccess);
  EXPECT_EQ(connection->closeUserClient(), host::kSmcSuccess);
  EXPECT_NE(connection->call(request, answer), host::kSmcSuccess);
}

TEST_P(SmcDriverContract, ReadsBackWhatItWrote) {
  EXPECT_EQ(write("F0Mn", {0x2E, 0xE0}).result, smc_result::kSuccess);
  EXPECT_EQ(read("F0Mn", 2).bytes[0], 0x2E);
  EXPECT_EQ(read("F0Mn", 2).bytes[1], 0xE0);
  EXPECT_EQ(write("FS! ", {0, 3}).result, smc_result::kSuccess);
  EXPECT_EQ(read("FS! ", 2).bytes[1], 3);
  EXPECT_EQ(write("FS! ", {0, 2}).result, smc_result::kSuccess);
  EXPECT_EQ(read("FS! ", 2).bytes[1], 2);
}

TEST_P(SmcDriverContract, CarriesAWholeController) {
  RecordingLog log;
  const auto controller = QELSystemManagementController::init(driver_, log);
  ASSERT_TRUE(controller);
  EXPECT_EQ(controller->availableKeys(), (std::set<std::string>{"#KEY", "F0Mn", "FNum", "FS! ", "KPPW", "RBr "}));
  EXPECT_EQ(controller->valueForProperty("#KEY"), Value(6));
  EXPECT_EQ(controller->valueForProperty("F0Mn"), Value(2000.0));
  EXPECT_EQ(controller->valueForProperty("FNum"), Value(2));
  EXPECT_EQ(controller->typeCodeOfProperty("FNum"), "ui8 ");
  EXPECT_EQ(controller->valueForProperty("KPPW"), Value("<write-only property>"));
  EXPECT_EQ(controller->valueForProperty("RBr "), Value("br"));
  EXPECT_TRUE(controller->writeRawBytes(Data{0x1F, 0x44}, "F0Mn"));
  EXPECT_EQ(controller->valueForProperty("F0Mn"), Value(2001.0));
  EXPECT_FALSE(controller->writeRawBytes(Data{1}, "FNum"));
  EXPECT_TRUE(log.entries().empty());
}

}  // namespace
}  // namespace vantrell::tests
