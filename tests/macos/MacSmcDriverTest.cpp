// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The controller of this computer, which is only read.

#include <algorithm>
#include <cstdint>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/macos/MacSmcDriver.h"
#include "system/QELSystemManagementController.h"
#include "system/SmcCalls.h"
#include "system/SmcCodes.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

using host::SmcRecord;
namespace smc_command = host::smc_command;
namespace smc_result = host::smc_result;

struct MacSmcDriver : testing::Test {
  void SetUp() override {
    const auto connection = driver.connect();
    if (connection) return;
    ASSERT_EQ(connection.error(), host::kSmcGeneralError);
    GTEST_SKIP() << "This computer has no controller.";
  }

  SmcRecord call(const SmcRecord& request) {
    SmcRecord answer;
    EXPECT_EQ(callSmcDriver(driver, request, answer), host::kSmcSuccess);
    return answer;
  }
  SmcRecord info(std::uint32_t key) { return call({.key = key, .command = smc_command::kKeyInfo}); }
  std::uint32_t countOfKeys() {
    const auto answer =
        call({.key = smcKeyFromString("#KEY"), .keyInfo = {.dataSize = 4}, .command = smc_command::kReadValue});
    EXPECT_EQ(answer.result, smc_result::kSuccess);
    std::uint32_t count = 0;
    for (int i = 0; i < 4; ++i) count = count << 8 | answer.bytes[i];
    return count;
  }

  host::MacSmcDriver driver;
};

TEST_F(MacSmcDriver, CountsItsKeys) {
  const auto answer = info(smcKeyFromString("#KEY"));
  EXPECT_EQ(answer.result, smc_result::kSuccess);
  EXPECT_EQ(stringFromSMCKey(answer.keyInfo.dataType), "ui32");
  EXPECT_EQ(answer.keyInfo.dataSize, 4U);
  EXPECT_GT(countOfKeys(), 0U);
  EXPECT_LT(countOfKeys(), 100'000U);
}

TEST_F(MacSmcDriver, NamesItsKeysAndTellsTheirSize) {
  const auto count = countOfKeys();
  for (const std::uint32_t index : {0U, count / 2, count - 1}) {
    const auto named = call({.command = smc_command::kKeyAtIndex, .data32 = index});
    ASSERT_EQ(named.result, smc_result::kSuccess) << index;
    const auto answer = info(named.key);
    EXPECT_EQ(answer.result, smc_result::kSuccess) << stringFromSMCKey(named.key);
    EXPECT_GT(answer.keyInfo.dataSize, 0U) << stringFromSMCKey(named.key);
  }
}

TEST_F(MacSmcDriver, TellsMissingKeysByItsResult) {
  EXPECT_EQ(info(0x01010101).result, smc_result::kKeyNotFound);
  EXPECT_NE(call({.command = smc_command::kKeyAtIndex, .data32 = 0x7FFFFFFF}).result, smc_result::kSuccess);
}

TEST_F(MacSmcDriver, CarriesAWholeController) {
  tests::RecordingLog log;
  const auto controller = QELSystemManagementController::init(driver, log);
  ASSERT_TRUE(controller);
  EXPECT_TRUE(controller->availableKeys().contains("#KEY"));
  EXPECT_EQ(controller->valueForProperty("#KEY"), Value(countOfKeys()));
  EXPECT_TRUE(log.entries().empty());
}

struct MacSmcDriverConcurrent : MacSmcDriver {};

TEST_F(MacSmcDriverConcurrent, ThreadsHaveConnectionsOfTheirOwn) {
  const auto count = countOfKeys();
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) EXPECT_EQ(countOfKeys(), count);
    });
  for (auto& thread : threads) thread.join();
}

}  // namespace
}  // namespace vantrell
