// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <barrier>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "system/SimulatedSmc.h"
#include "system/SmcOperations.h"
#include "tests/support/RecordingLog.h"

namespace vantrell {
namespace {

constexpr int kThreads = 8;

TEST(SmcConcurrent, AllThreadsGetOneController) {
  SimulatedSmc smc;
  tests::RecordingLog log;
  SmcSharedController shared(smc, log);
  std::vector<std::shared_ptr<QELSystemManagementController>> controllers(kThreads);
  std::barrier start(kThreads);
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&, i] {
        start.arrive_and_wait();
        controllers[static_cast<std::size_t>(i)] = shared.controller();
      });
    }
  }
  EXPECT_EQ(std::set(controllers.begin(), controllers.end()).size(), 1U);
  EXPECT_TRUE(controllers[0]);
}

TEST(SmcConcurrent, ReadersAndWritersNeverSeeHalfAValue) {
  SimulatedSmc smc;
  tests::RecordingLog log;
  SmcSharedController shared(smc, log);
  ASSERT_EQ(SmcOperations(shared).writeSmcvalue({"F0Mn", Data{0, 0}}), std::nullopt);
  std::vector<std::jthread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      const auto byte = static_cast<std::uint8_t>(i);
      for (int round = 0; round < 200; ++round) {
        EXPECT_EQ(SmcOperations(shared).writeSmcvalue({"F0Mn", Data{byte, byte}}), std::nullopt);
        const auto value = shared.controller()->valueForProperty("F0Mn");
        const auto raw = static_cast<int>(value.value().asNumber()->doubleValue() * 4);
        EXPECT_EQ(raw >> 8, raw & 0xFF);
      }
    });
  }
}

}  // namespace
}  // namespace vantrell
