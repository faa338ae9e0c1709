// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// One call of the driver, and reading a key.

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "system/SmcCalls.h"
#include "system/SmcCodes.h"
#include "tests/system/SmcScriptedDriver.h"

namespace vantrell {
namespace {

using host::SmcRecord;
using host::SmcReturnCode;
using tests::ScriptedSmc;
using Steps = std::vector<std::string>;
namespace smc_command = host::smc_command;

class SmcCall : public testing::Test {
 protected:
  SmcReturnCode call() { return callSmcDriver(driver_, request_, answer_); }

  ScriptedSmc driver_;
  SmcRecord request_{.key = smcCode("FNum"), .command = smc_command::kKeyInfo};
  SmcRecord answer_{.key = 1, .result = 99};
};

TEST_F(SmcCall, HasAConnectionOfItsOwn) {
  EXPECT_EQ(call(), host::kSmcSuccess);
  EXPECT_EQ(driver_.steps, (Steps{"connect", "open", "call", "close", "disconnect"}));
  EXPECT_EQ(answer_.result, 0);
  EXPECT_EQ(answer_.keyInfo.dataSize, 1U);
  EXPECT_EQ(call(), host::kSmcSuccess);
  EXPECT_EQ(driver_.steps.size(), 10U);
}

TEST_F(SmcCall, WithoutTheServiceReturnsWhatConnectingDid) {
  for (const SmcReturnCode code : {host::kSmcGeneralError, SmcReturnCode{0xE00002C5}, SmcReturnCode{0x10000003}}) {
    driver_.connectCode = code;
    driver_.steps.clear();
    answer_.result = 99;
    EXPECT_EQ(call(), code);
    EXPECT_EQ(driver_.steps, Steps{"connect"});
    EXPECT_EQ(answer_.result, 0);
  }
}

TEST_F(SmcCall, DisconnectsWhenTheUserClientDoesNotOpen) {
  driver_.openCode = 0xE00002C1;
  EXPECT_EQ(call(), 0xE00002C1);
  EXPECT_EQ(driver_.steps, (Steps{"connect", "open", "disconnect"}));
}

TEST_F(SmcCall, ClosesTheUserClientAfterAFailedCall) {
  driver_.answer = [](const SmcRecord&, SmcRecord&, SmcReturnCode& code) {
    code = 0xE00002D8;
    return true;
  };
  EXPECT_EQ(call(), 0xE00002D8);
  EXPECT_EQ(driver_.steps, (Steps{"connect", "open", "call", "close", "disconnect"}));
}

TEST_F(SmcCall, DoesNotMindHowClosingGoes) {
  driver_.closeCode = 0xE00002BC;
  EXPECT_EQ(call(), host::kSmcSuccess);
}

TEST_F(SmcCall, SendsTheRecordAtItsStatedOffsets) {
  request_.keyInfo.dataSize = 0x01020304;
  request_.data32 = 7;
  request_.bytes[31] = 9;
  call();
  std::array<std::uint8_t, 80> bytes;
  ASSERT_EQ(sizeof(SmcRecord), bytes.size());
  std::memcpy(bytes.data(), &driver_.calls.at(0), bytes.size());
  const auto word = [&](std::size_t offset) {
    std::uint32_t number;
    std::memcpy(&number, bytes.data() + offset, sizeof number);
    return number;
  };
  EXPECT_EQ(word(0), smcCode("FNum"));
  EXPECT_EQ(word(28), 0x01020304U);
  EXPECT_EQ(bytes[42], 9);
  EXPECT_EQ(word(44), 7U);
  EXPECT_EQ(bytes[79], 9);
  std::uint32_t rest = 0;
  for (const std::size_t offset : {4, 8, 12, 16, 20, 24, 32, 36, 48}) rest |= word(offset);
  EXPECT_EQ(rest, 0U) << "what is not set is zero";
}

class SmcKeyReading : public testing::Test {
 protected:
  SmcReturnCode read(const char* key) { return readSmcKey(driver_, smcKeyFromString(key), buffer_, size_, type_); }

  ScriptedSmc driver_;
  std::vector<std::uint8_t> buffer_ = std::vector<std::uint8_t>(8, 0xEE);
  std::size_t size_ = 8;
  std::uint32_t type_ = 0xDDDDDDDD;
};

TEST_F(SmcKeyReading, AsksForTheSizeFirst) {
  EXPECT_EQ(read("F0Mx"), host::kSmcSuccess);
  EXPECT_EQ(size_, 2U);
  EXPECT_EQ(type_, smcCode("fpe2"));
  EXPECT_EQ(buffer_, (std::vector<std::uint8_t>{0x60, 0xE0, 0, 0, 0, 0, 0, 0}));
  ASSERT_EQ(driver_.calls.size(), 2U);
  EXPECT_EQ(driver_.calls[0].command, 9);
  EXPECT_EQ(driver_.calls[1].command, 5);
  EXPECT_EQ(driver_.calls[1].key, smcCode("F0Mx"));
  EXPECT_EQ(driver_.calls[1].keyInfo.dataSize, 2U);
}

TEST_F(SmcKeyReading, TakesNoMoreThanTheGivenSize) {
  size_ = 3;
  EXPECT_EQ(read("F0ID"), host::kSmcSuccess);
  EXPECT_EQ(size_, 3U);
  EXPECT_EQ(buffer_, (std::vector<std::uint8_t>{0, 1, 2, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE})) << "zeroed over the size only";
}

TEST_F(SmcKeyReading, RefusesAMissingKeyBufferOrSize) {
  std::size_t none = 0;
  EXPECT_EQ(read("FNu"), host::kSmcBadArgument);
  EXPECT_EQ(readSmcKey(driver_, smcCode("FNum"), {}, size_, type_), host::kSmcBadArgument);
  EXPECT_EQ(readSmcKey(driver_, smcCode("FNum"), buffer_, none, type_), host::kSmcBadArgument);
  EXPECT_TRUE(driver_.steps.empty());
  EXPECT_EQ(type_, 0xDDDDDDDD);
}

TEST_F(SmcKeyReading, TellsWhatEveryResultOfEitherCallMeans) {
  for (const auto command : {smc_command::kKeyInfo, smc_command::kReadValue}) {
    for (unsigned result = 1; result < 256; ++result) {
      driver_.answer = [&](const SmcRecord& input, SmcRecord& output, SmcReturnCode&) {
        if (input.command != command) return false;
        output.result = static_cast<std::uint8_t>(result);
        return true;
      };
      size_ = 8;
      type_ = 0;
      EXPECT_EQ(read("FNum"), result == 132 ? 0xE00002F0 : 0xE00002C9) << result;
      EXPECT_EQ(size_, 8U) << "untouched";
      EXPECT_EQ(type_, command == smc_command::kReadValue ? smcCode("ui8 ") : 0U);
    }
  }
}

TEST_F(SmcKeyReading, ReturnsTheCodeOfTheCallThatFailed) {
  for (const auto command : {smc_command::kKeyInfo, smc_command::kReadValue}) {
    driver_.answer = [&](const SmcRecord& input, SmcRecord&, SmcReturnCode& code) {
      code = 0xE00002D8;
      return input.command == command;
    };
    EXPECT_EQ(read("FNum"), 0xE00002D8);
  }
}

TEST_F(SmcKeyReading, SurvivesAControllerThatClaimsMoreThanARecordHolds) {
  buffer_.assign(255, 0xEE);
  size_ = 255;
  driver_.answer = [](const SmcRecord& input, SmcRecord& output, SmcReturnCode&) {
    output.keyInfo.dataSize = std::numeric_limits<std::uint32_t>::max();
    if (input.command == smc_command::kReadValue) output.bytes.fill(0xAB);
    return true;
  };
  EXPECT_EQ(read("FNum"), host::kSmcSuccess);
  EXPECT_EQ(size_, 255U);
  EXPECT_EQ(std::ranges::count(buffer_, 0xAB), 32);
  EXPECT_EQ(std::ranges::count(buffer_, 0), 255 - 32);
}

TEST_F(SmcKeyReading, SurvivesASizeBeyondTheBuffer) {
  size_ = 4096;
  EXPECT_EQ(read("F0ID"), host::kSmcSuccess);
  EXPECT_EQ(size_, 8U);
}

}  // namespace
}  // namespace vantrell
