// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <future>
#include <mutex>
#include <thread>

#include <gmock/gmock.h>

#include "foundation/PosixCodes.h"
#include "tests/host/TransportContract.h"
#include "tests/macos/AnonymousWire.h"

// The contract through XPC, and what holds there alone.

namespace vantrell::tests {
namespace {

const TransportImplementation kImplementations[] = {
    {"Anonymous", [](const host::TransportLimits& limits) { return std::make_unique<AnonymousWire>(limits); }},
};

INSTANTIATE_TEST_SUITE_P(Wires, TransportContract, testing::ValuesIn(kImplementations), TransportContract::nameOf);
INSTANTIATE_TEST_SUITE_P(Wires, TransportConcurrent, testing::ValuesIn(kImplementations), TransportContract::nameOf);

/// Keeps the replies of requests with code 1 and answers all others with nil.
class MacTransport : public testing::Test {
 protected:
  void open(const host::TransportLimits& limits = {}) {
    wire_ = std::make_unique<AnonymousWire>(limits);
    wire_->service.onPerform = [this](TestService::Performed call) {
      if (call.code != 1) return call.reply(std::nullopt);
      const std::lock_guard lock(mutex_);
      kept_.push_back(std::move(call.reply));
      changed_.notify_all();
    };
    wire_->start();
    connection_ = wire_->connect();
    ASSERT_TRUE(connection_);
  }
  void waitForKept(std::size_t count) {
    std::unique_lock lock(mutex_);
    ASSERT_TRUE(changed_.wait_for(lock, kPatience, [&] { return kept_.size() == count; }));
  }
  void answerKept() {
    const std::lock_guard lock(mutex_);
    for (auto& reply : kept_) reply(std::nullopt);
    kept_.clear();
  }
  std::future<Result<ErrorOrNil>> perform(std::uint64_t code, Array arguments = {}) {
    return std::async(std::launch::async, [this, code, arguments = std::move(arguments)] {
      return connection_->performPrivilegedOperation(code, {}, nullptr, arguments);
    });
  }

  std::unique_ptr<AnonymousWire> wire_;
  std::unique_ptr<host::ServiceConnection> connection_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Reply<ErrorOrNil>> kept_;
};

TEST_F(MacTransport, BoundsTheUnansweredRequests) {
  host::TransportLimits limits;
  limits.unansweredRequests = 2;
  open(limits);
  auto first = perform(1);
  auto second = perform(1);
  waitForKept(2);
  EXPECT_EQ(perform(2).get().value(), Error::posix(posix::kNoBufferSpace));
  answerKept();
  EXPECT_EQ(first.get().value(), std::nullopt);
  EXPECT_EQ(second.get().value(), std::nullopt);
  EXPECT_EQ(perform(2).get().value(), std::nullopt) << "an answer makes room";
}

TEST_F(MacTransport, BoundsTheBytesOfUnansweredRequests) {
  host::TransportLimits limits;
  limits.unansweredBytes = 3 << 20;
  open(limits);
  const Array large{Data(2 << 20, 7)};
  auto first = perform(1, large);
  waitForKept(1);
  EXPECT_EQ(perform(2, large).get().value(), Error::posix(posix::kNoBufferSpace));
  EXPECT_EQ(perform(2).get().value(), std::nullopt) << "a small one is still taken";
  answerKept();
  EXPECT_EQ(first.get().value(), std::nullopt);
  EXPECT_EQ(perform(2, large).get().value(), std::nullopt) << "an answer makes room";
}

TEST_F(MacTransport, ARequestWhoseReplyIsDroppedFails) {
  open();
  auto request = perform(1);
  waitForKept(1);
  {
    const std::lock_guard lock(mutex_);
    kept_.clear();
  }
  const bool ended = request.wait_for(kPatience) == std::future_status::ready;
  EXPECT_TRUE(ended);
  if (!ended) wire_->listener.reset();
  EXPECT_FALSE(request.get().has_value());
}

TEST_F(MacTransport, AnAnswerToAClientThatHasGoneIsDropped) {
  open();
  auto request = perform(1);
  waitForKept(1);
  wire_->listener.reset();
  EXPECT_FALSE(request.get().has_value());
  answerKept();
}

TEST_F(MacTransport, RefusesErrorsAmongArguments) {
  open();
  const auto result = connection_->performPrivilegedOperation(2, {}, nullptr, {Array{Error("d", 1)}});
  ASSERT_FALSE(result.has_value());
  EXPECT_TRUE(result.error().isPosix(posix::kInvalidArgument));
  EXPECT_TRUE(connection_->getVersionString().has_value());
}

TEST_F(MacTransport, ClosesConnectionsBeyondTheBound) {
  host::TransportLimits limits;
  limits.connections = 1;
  open(limits);
  EXPECT_FALSE(wire_->tryToConnect().has_value());
  EXPECT_TRUE(wire_->log.waitForMessage("Too many connections: new ones are closed."));
  EXPECT_TRUE(connection_->getVersionString().has_value());
}

TEST_F(MacTransport, AListenerThatWasNeverResumedMayBeLetGo) {
  RecordingLog log;
  host::MacTransport transport(log);
  auto unused = transport.makeAnonymousListener();
  unused.reset();
  auto asked = transport.makeAnonymousListener();
  EXPECT_TRUE(asked->endpoint());
  asked.reset();
  EXPECT_FALSE(transport.makeListener("").has_value());
}

TEST(MacClientTransport, FindsNoServiceThatIsNotThere) {
  host::MacClientTransport client;
  const auto daemon = client.connectToServiceOnBus("com.vantrell.test.nobody-has-this-name");
  ASSERT_FALSE(daemon.has_value());
  EXPECT_TRUE(daemon.error().isPosix(posix::kNoEntry)) << daemon.error().code();
  const auto agent = client.connectToAddress("mach:com.vantrell.test.nobody-has-this-name");
  ASSERT_FALSE(agent.has_value());
  EXPECT_TRUE(agent.error().isPosix(posix::kNoEntry)) << agent.error().code();
}

TEST(MacClientTransport, RefusesAddressesOfOtherNotations) {
  host::MacClientTransport client;
  for (const char* address : {"", "mach:", "unix:path=/tmp/socket", "com.vantrell.service"}) {
    const auto connection = client.connectToAddress(address);
    ASSERT_FALSE(connection.has_value()) << address;
    EXPECT_TRUE(connection.error().isPosix(posix::kInvalidArgument)) << address;
  }
  EXPECT_FALSE(client.connectToServiceOnBus("").has_value());
  EXPECT_FALSE(client.connectToServiceOnBus(std::string_view("a\0b", 3)).has_value());
  EXPECT_FALSE(client.connectToEndpoint(nullptr).has_value());
}

TEST(MacClientTransport, StartsNoHelperOfItsOwn) {
  const auto spawned = host::MacClientTransport().spawnService("/bin/ls");
  ASSERT_FALSE(spawned.has_value());
  EXPECT_TRUE(spawned.error().isPosix(posix::kNotSupported));
}

}  // namespace
}  // namespace vantrell::tests
