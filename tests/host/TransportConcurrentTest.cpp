// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <thread>

#include <gmock/gmock.h>

#include "tests/host/TransportContract.h"

// Many clients and threads at once; run again under ThreadSanitizer.

namespace vantrell::tests {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TransportConcurrent);

void TransportConcurrent::SetUp() {
  if (!wire_->isAvailable()) GTEST_SKIP() << "this machine lacks what the wire needs";
}

void TransportConcurrent::TearDown() {
  std::vector<std::thread> workers;
  {
    const std::lock_guard lock(mutex_);
    workers.swap(workers_);
  }
  for (std::thread& worker : workers) worker.join();
}

void TransportConcurrent::answerOnOtherThreads() {
  wire_->service.onPerform = [this](TestService::Performed call) {
    const std::lock_guard lock(mutex_);
    workers_.emplace_back([call = std::move(call)]() mutable {
      call.reply(Error("code", static_cast<std::int64_t>(call.code), {{"arguments", *call.arguments}}));
    });
  };
}

namespace {

TEST_P(TransportConcurrent, SixtyFourClientsHaveTheirOwnAnswers) {
  answerOnOtherThreads();
  wire_->start();
  std::atomic<int> good = 0;
  std::vector<std::thread> clients;
  for (int client = 0; client < 64; ++client) {
    clients.emplace_back([&, client] {
      const auto connection = wire_->connect();
      if (!connection || !connection->registerClientWithPID(client)) return;
      for (std::uint64_t i = 0; i < 5; ++i) {
        const std::uint64_t code = static_cast<std::uint64_t>(client) * 100 + i;
        const auto result = connection->performPrivilegedOperation(code, {}, nullptr, {Value(code)});
        if (result && *result && (*result)->code() == static_cast<std::int64_t>(code)) ++good;
      }
      if (!connection->unregisterClientWithPID(client)) ++good;
    });
  }
  for (std::thread& client : clients) client.join();
  EXPECT_EQ(good, 64 * 6);
  for (int client = 0; client < 64; ++client) {
    EXPECT_TRUE(wire_->service.waitForEvent("unregister " + std::to_string(client)));
  }
}

TEST_P(TransportConcurrent, ThreadsShareOneConnection) {
  answerOnOtherThreads();
  wire_->start();
  const auto connection = wire_->connect();
  std::atomic<int> good = 0;
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 8; ++thread) {
    threads.emplace_back([&, thread] {
      for (std::uint64_t i = 0; i < 20; ++i) {
        const std::uint64_t code = static_cast<std::uint64_t>(thread) * 1000 + i;
        const auto result = connection->performPrivilegedOperation(code, {}, nullptr, {});
        if (result && *result && (*result)->code() == static_cast<std::int64_t>(code)) ++good;
        if (!connection->cancelPrivilegedOperation(code, {}, {})) ++good;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(good, 8 * 40);
}

TEST_P(TransportConcurrent, AClientThatIsBeingServedHoldsUpNoOther) {
  std::atomic<bool> release = false;
  wire_->service.onPerform = [&](TestService::Performed call) {
    // On the transport's own thread, as no real service would.
    while (call.code == 1 && !release) std::this_thread::yield();
    call.reply(std::nullopt);
  };
  wire_->start();
  const auto slow = wire_->connect();
  std::thread waiting([&] { EXPECT_TRUE(slow->performPrivilegedOperation(1, {}, nullptr, {}).has_value()); });
  EXPECT_TRUE(wire_->service.waitForEvent("perform 1"));
  const auto other = wire_->connect();
  EXPECT_TRUE(other->performPrivilegedOperation(2, {}, nullptr, {}).has_value());
  release = true;
  waiting.join();
}

TEST_P(TransportConcurrent, TheListenerEndsUnderItsClients) {
  answerOnOtherThreads();
  wire_->start();
  std::vector<std::thread> clients;
  std::vector<std::unique_ptr<host::ServiceConnection>> connections;
  for (int client = 0; client < 8; ++client) connections.push_back(wire_->connect());
  std::atomic<int> answered = 0;
  for (auto& connection : connections) {
    clients.emplace_back([&] {
      while (connection->performPrivilegedOperation(1, {}, nullptr, {Value(Data(1000))})) ++answered;
    });
  }
  while (answered < 50) std::this_thread::yield();
  wire_->listener.reset();
  for (std::thread& client : clients) client.join();
}

TEST_P(TransportConcurrent, SendersShareAFeedbackConnection) {
  std::atomic<int> received = 0;
  std::atomic<bool> ordered = true;
  std::uint64_t last[4] = {};
  auto listener = wire_->clientTransport().makeFeedbackListener([&](const Dictionary& message) {
    const std::uint64_t sender = message.find("sender")->asNumber()->unsignedValue();
    const std::uint64_t number = message.find("SequenceNumber")->asNumber()->unsignedValue();
    if (number != ++last[sender]) ordered = false;
    ++received;
  });
  ASSERT_TRUE(listener.has_value());
  wire_->service.onPerform = [&](TestService::Performed call) {
    auto feedback = wire_->serviceTransport().connectionToEndpoint(std::move(call.endpoint));
    ASSERT_TRUE(feedback.has_value());
    (*feedback)->resume();
    std::vector<std::thread> senders;
    for (std::uint64_t sender = 0; sender < 4; ++sender) {
      senders.emplace_back([&, sender] {
        for (std::uint64_t i = 1; i <= 500; ++i) {
          (*feedback)->processPrivilegedOperationFeedback(
              {{"sender", sender}, {"SequenceNumber", i}, {"OutputData", Data(3000)}});
        }
      });
    }
    for (std::thread& sender : senders) sender.join();
    call.reply(std::nullopt);
  };
  wire_->start();
  const auto connection = wire_->connect();
  EXPECT_TRUE(connection->performPrivilegedOperation(1, {}, listener->get(), {}).has_value());
  EXPECT_TRUE((*listener)->waitUntilClosed(kPatience));
  EXPECT_EQ(received, 2000);
  EXPECT_TRUE(ordered);
}

}  // namespace
}  // namespace vantrell::tests
