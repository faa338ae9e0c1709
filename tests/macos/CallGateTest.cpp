// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/macos/CallGate.h"

namespace vantrell::tests {
namespace {

using namespace std::chrono_literals;
using host::CallGate;

TEST(CallGate, LetsCallsInUntilItIsClosed) {
  CallGate gate;
  EXPECT_TRUE(static_cast<bool>(gate.enter()));
  EXPECT_FALSE(gate.isClosed());
  gate.close();
  EXPECT_TRUE(gate.isClosed());
  EXPECT_FALSE(static_cast<bool>(gate.enter()));
  gate.waitUntilEmpty();
}

TEST(CallGate, WaitsForWhatIsInside) {
  CallGate gate;
  std::atomic<bool> left = false;
  std::atomic<bool> entered = false;
  std::thread caller([&] {
    const CallGate::Pass pass = gate.enter();
    entered = true;
    std::this_thread::sleep_for(50ms);
    left = true;
  });
  while (!entered) std::this_thread::yield();
  gate.close();
  gate.waitUntilEmpty();
  EXPECT_TRUE(left);
  caller.join();
}

TEST(CallGateConcurrent, NothingIsInsideOnceItIsClosedAndEmpty) {
  for (int round = 0; round < 50; ++round) {
    auto gate = std::make_unique<CallGate>();
    std::atomic<bool> taken = false;
    std::atomic<int> tooLate = 0;
    std::atomic<int> started = 0;
    std::vector<std::thread> callers;
    for (int i = 0; i < 4; ++i) {
      callers.emplace_back([&] {
        ++started;
        while (const CallGate::Pass pass = gate->enter()) {
          if (taken) ++tooLate;
        }
      });
    }
    while (started < 4) std::this_thread::yield();
    gate->close();
    gate->waitUntilEmpty();
    taken = true;
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(tooLate, 0);
  }
}

}  // namespace
}  // namespace vantrell::tests
