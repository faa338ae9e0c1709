// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Many clients at once: run again under ThreadSanitizer.

#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ServiceUnderTest.h"

namespace vantrell {
namespace {

using namespace tests::operation_code;

constexpr int kClients = 64;

TEST(ServiceConcurrent, SixtyFourClientsRegisterRequestCancelAndLeave) {
  tests::ServiceUnderTest service;
  service.gate.open();
  std::atomic<int> cancelled = 0;
  std::atomic<int> done = 0;

  const auto work = [&](std::int32_t pid) {
    tests::HandMadeClient client(service, pid);
    client.registerClient();
    for (int round = 0; round < 3; ++round) {
      EXPECT_EQ(client.perform(kNop, {}), std::nullopt);

      const auto token = client.token(kWaitForCancel, {"x"});
      std::atomic<bool> answered = false;
      std::thread canceller([&] {
        while (!answered) {
          client.connection().cancelPrivilegedOperation(kWaitForCancel, token, {"x"});
          std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
      });
      if (client.perform(kWaitForCancel, token, {"x"}) == Error::posix(89)) ++cancelled;
      answered = true;
      canceller.join();

      tests::FeedbackCollector feedback(*service.host().clientTransport);
      EXPECT_EQ(client.perform(kWaitForGate, {}, feedback.listener()), std::nullopt);
      const auto messages = feedback.messages();
      EXPECT_EQ(messages.size(), 3u);
      ++done;
    }
    EXPECT_EQ(client.connection().unregisterClientWithPID(pid), std::nullopt);
  };

  std::vector<std::thread> threads;
  for (int i = 0; i < kClients; ++i) threads.emplace_back(work, 1000 + i);
  for (auto& thread : threads) thread.join();

  EXPECT_EQ(done, 3 * kClients);
  EXPECT_EQ(cancelled, 3 * kClients);
  EXPECT_TRUE(service.log().waitForMessage("Terminating privileged tool."));
  EXPECT_TRUE(service.tool().clients().registeredClients().empty());
}

}  // namespace
}  // namespace vantrell
