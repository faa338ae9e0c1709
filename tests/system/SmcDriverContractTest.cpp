// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What every way to a System Management Controller must do, real or simulated.

#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "host/linux/AppleSmcDriver.h"
#include "system/QELSystemManagementController.h"
#include "system/SimulatedSmc.h"
#include "system/SmcCalls.h"
#include "system/SmcCodes.h"
#include "tests/support/RecordingLog.h"
#include "tests/system/SmcFakeAttributes.h"

namespace vantrell {
namespace {

using host::SmcRecord;
using tests::FakeAppleSmc;
namespace smc_command = host::smc_command;
namespace smc_result = host::smc_result;

struct Candidate {
  std::unique_ptr<FakeAppleSmc> behind;  // what the driver talks to, for the Linux one
  std::unique_ptr<host::SmcDriver> driver;
};
struct Implementation {
  const char* name;
  std::function<Candidate()> make;
};

// Both have: #KEY, F0Mn (writable speed), FNum, FS! (writable bits), KPPW (write-only), RBr (read-only text).
Candidate makeSimulated() {
  const auto readOnly = SimulatedSmc::readOnlyKey;
  const auto readWrite = SimulatedSmc::readWriteKey;
  return {nullptr, std::make_unique<SimulatedSmc>(std::vector<SimulatedSmc::Key>{
                       readWrite("FS! ", "ui16", {0, 0}), SimulatedSmc::writeOnlyKey("KPPW", "ui16", {0, 0}),
                       readOnly("RBr ", "ch8*", {'b', 'r'}), readWrite("F0Mn", "fpe2", {0x1F, 0x40}),
                       readOnly("FNum", "ui8", {2})})};
}
Candidate makeLinux() {
  auto smc = std::make_unique<FakeAppleSmc>();
  smc->keys = {{"#KEY", "ui32", std::string("\0\0\0\6", 4)},
               {"F0Mn", "fpe2", "\x1F\x40"},
               {"FNum", "ui8", "\2"},
               {"FS! ", "ui16", std::string(2, '\0')},
               {"KPPW", "ui16", std::string(2, '\0'), false},
               {"RBr ", "ch8*", "br"}};
  auto driver = std::make_unique<host::AppleSmcDriver>(std::make_unique<tests::FakeSmcAttributes>(*smc));
  return {std::move(smc), std::move(driver)};
}

class SmcDriverContract : public testing::TestWithParam<Implementation> {
 protected:
  SmcRecord call(SmcRecord request) {
    SmcRecord answer;
    EXPECT_EQ(callSmcDriver(driver_, request, answer), host::kSmcSuccess);
    return answer;
  }
  SmcRecord info(const char* key) { return call({.key = smcKeyFromString(key), .command = smc_command::kKeyInfo}); }
  SmcRecord read(const char* key, std::uint32_t size) {
    return call({.key = smcKeyFromString(key), .keyInfo = {.dataSize = size}, .command = smc_command::kReadValue});
  }
  SmcRecord write(const char* key, const Data& bytes) {
    SmcRecord request{.key = smcKeyFromString(key),
                      .keyInfo = {.dataSize = static_cast<std::uint32_t>(bytes.size())},
                      .command = smc_command::kWriteValue};
    std::ranges::copy(bytes, request.bytes.begin());
    return call(request);
  }

  Candidate candidate_ = GetParam().make();
  host::SmcDriver& driver_ = *candidate_.driver;
};
INSTANTIATE_TEST_SUITE_P(All, SmcDriverContract,
                         testing::Values(Implementation{"Simulated", makeSimulated},
                                         Implementation{"Linux", makeLinux}),
                         [](const testing::TestParamInfo<Implementation>& info) { return info.param.name; });

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
  tests::RecordingLog log;
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
}  // namespace vantrell
