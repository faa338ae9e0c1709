// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <thread>

#include <gmock/gmock.h>

#include "host/macos/ListenerEndpoint.h"
#include "host/macos/MacFeedbackListener.h"
#include "host/macos/MacTransport.h"
#include "host/macos/SendBarrier.h"
#include "tests/host/TransportFixture.h"

namespace vantrell::tests {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

Dictionary chunk(std::uint64_t number, std::size_t size = 65536) {
  return {{"OutputData", Data(size)}, {"SequenceNumber", number}};
}

host::TransportLimits shortLimits() {
  host::TransportLimits limits;
  limits.waitingFeedbackBytes = 1 << 20;
  limits.feedbackStall = 300ms;
  return limits;
}

/// A feedback connection to a listener of this process.
class MacFeedbackConnection : public testing::Test {
 protected:
  void open(host::FeedbackInbox::Handler handler, const host::TransportLimits& limits = {}) {
    transport_.emplace(log_, limits);
    listener_ = std::make_unique<host::MacFeedbackListener>(std::move(handler));
    auto made = transport_->connectionToEndpoint(std::make_unique<host::ListenerEndpoint>(listener_->takeEndpoint()));
    ASSERT_TRUE(made.has_value());
    connection_ = *std::move(made);
  }
  bool waitUntilGone() const {
    for (int i = 0; i < 2000 && !connection_->isClientGone(); ++i) std::this_thread::sleep_for(10ms);
    return connection_->isClientGone();
  }
  RecordingLog log_;
  std::optional<host::MacTransport> transport_;
  std::unique_ptr<host::MacFeedbackListener> listener_;
  std::shared_ptr<host::FeedbackConnection> connection_;
  FeedbackCollector collector_;
};

TEST_F(MacFeedbackConnection, KeepsWhatIsSentBeforeItIsResumed) {
  open([this](const Dictionary& message) { collector_.take(message); });
  connection_->processPrivilegedOperationFeedback({{"SequenceNumber", 1}});
  std::this_thread::sleep_for(50ms);
  EXPECT_TRUE(collector_.messages().empty());
  connection_->resume();
  connection_->processPrivilegedOperationFeedback({{"SequenceNumber", 2}});
  ASSERT_TRUE(collector_.waitForCount(2));
  EXPECT_THAT(collector_.messages(), ElementsAre(Dictionary{{"SequenceNumber", 1}}, Dictionary{{"SequenceNumber", 2}}));
}

TEST_F(MacFeedbackConnection, KeepsWhatIsSentWhileSuspended) {
  open([this](const Dictionary& message) { collector_.take(message); });
  connection_->resume();
  connection_->suspend();
  connection_->processPrivilegedOperationFeedback({{"SequenceNumber", 1}});
  std::this_thread::sleep_for(50ms);
  EXPECT_TRUE(collector_.messages().empty());
  connection_->resume();
  EXPECT_TRUE(collector_.waitForCount(1));
}

TEST_F(MacFeedbackConnection, DeliversWhatWasSentBeforeItWasInvalidated) {
  std::atomic<int> received = 0;
  open([&](const Dictionary&) {
    std::this_thread::sleep_for(1ms);
    ++received;
  });
  connection_->resume();
  for (std::uint64_t i = 0; i < 300; ++i) connection_->processPrivilegedOperationFeedback(chunk(i));
  connection_->suspend();
  connection_->invalidate();
  connection_->processPrivilegedOperationFeedback(chunk(300));  // too late
  connection_.reset();
  EXPECT_TRUE(listener_->waitUntilClosed(kPatience));
  EXPECT_EQ(received, 300);
}

TEST_F(MacFeedbackConnection, AClientThatLetsItsListenerGoIsGone) {
  open([](const Dictionary&) {});
  connection_->resume();
  connection_->processPrivilegedOperationFeedback(chunk(1));
  EXPECT_FALSE(connection_->isClientGone());
  listener_.reset();
  EXPECT_TRUE(waitUntilGone());
  connection_->processPrivilegedOperationFeedback(chunk(2));
}

TEST_F(MacFeedbackConnection, ASlowReaderLosesNothingAndItsSenderWaits) {
  if (!host::hasSendBarriers()) GTEST_SKIP() << "needs macOS 10.15";
  std::atomic<int> received = 0;
  open(
      [&](const Dictionary&) {
        std::this_thread::sleep_for(8ms);
        ++received;
      },
      shortLimits());
  connection_->resume();
  constexpr int kCount = 800;
  std::atomic<int> sent = 0;
  std::thread sender([&] {
    for (int i = 0; i < kCount; ++i, ++sent) connection_->processPrivilegedOperationFeedback(chunk(1));
    connection_.reset();
  });
  std::this_thread::sleep_for(100ms);
  EXPECT_LT(sent, kCount);
  sender.join();
  EXPECT_TRUE(listener_->waitUntilClosed(kPatience));
  EXPECT_EQ(received, kCount);
  EXPECT_TRUE(log_.entries().empty());
}

TEST_F(MacFeedbackConnection, AClientThatTakesNothingCountsAsGone) {
  if (!host::hasSendBarriers()) GTEST_SKIP() << "needs macOS 10.15";
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  open([released](const Dictionary&) { released.wait(); }, shortLimits());
  connection_->resume();
  const auto begin = std::chrono::steady_clock::now();
  for (std::uint64_t i = 0; i < 2000; ++i) connection_->processPrivilegedOperationFeedback(chunk(i));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
  EXPECT_TRUE(connection_->isClientGone());
  EXPECT_EQ(log_.count("A client takes no feedback and counts as gone: its messages are dropped."), 1U);
  release.set_value();
}

TEST_F(MacFeedbackConnection, AClientThatTakesNothingWhileNobodyWaitsIsStillThere) {
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  open([released](const Dictionary&) { released.wait(); }, shortLimits());
  connection_->resume();
  connection_->processPrivilegedOperationFeedback(chunk(1));
  std::this_thread::sleep_for(600ms);
  EXPECT_FALSE(connection_->isClientGone());
  release.set_value();
}

TEST_F(MacFeedbackConnection, EndsWithTheTransportAtOnce) {
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  open([released](const Dictionary&) { released.wait(); });
  connection_->resume();
  std::thread sender([&] {
    for (std::uint64_t i = 0; i < 3000; ++i) connection_->processPrivilegedOperationFeedback(chunk(i));
  });
  std::this_thread::sleep_for(100ms);
  const auto begin = std::chrono::steady_clock::now();
  transport_.reset();
  sender.join();
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
  release.set_value();
}

TEST_F(MacFeedbackConnection, TakesOneConnectionOnly) {
  open([this](const Dictionary& message) { collector_.take(message); });
  EXPECT_EQ(listener_->takeEndpoint(), nil);
}

TEST(MacFeedbackListener, IsClosedWhenTheAnswerCameAndNobodyConnected) {
  host::MacFeedbackListener listener([](const Dictionary&) {});
  EXPECT_FALSE(listener.waitUntilClosed(20ms));
  listener.inbox()->requestAnswered();
  EXPECT_FALSE(listener.waitUntilClosed(0ms));
  EXPECT_TRUE(listener.waitUntilClosed(kPatience));
}

TEST(MacFeedbackTransport, RefusesAnEndpointOfAnotherKind) {
  RecordingLog log;
  host::MacTransport transport(log);
  class Other final : public host::Endpoint {};
  EXPECT_FALSE(transport.connectionToEndpoint(std::make_unique<Other>()).has_value());
  EXPECT_FALSE(transport.connectionToEndpoint(nullptr).has_value());
  EXPECT_FALSE(transport.connectionToEndpoint(std::make_unique<host::ListenerEndpoint>(nil)).has_value());
}

}  // namespace
}  // namespace vantrell::tests
