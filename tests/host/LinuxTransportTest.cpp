// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <future>
#include <limits>
#include <thread>

#include <gmock/gmock.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "tests/host/LinuxTransportFixture.h"
#include "tests/host/TransportContract.h"

// The contract on a socket and through a message bus, and what holds on these alone.

namespace vantrell::tests {
namespace {

using Kind = ServiceOnWire::Kind;

const TransportImplementation kImplementations[] = {
    {"Socket",
     [](const host::TransportLimits& limits) { return std::make_unique<ServiceOnWire>(Kind::Socket, limits); }},
    {"Bus", [](const host::TransportLimits& limits) { return std::make_unique<ServiceOnWire>(Kind::Bus, limits); }},
};

INSTANTIATE_TEST_SUITE_P(Wires, TransportContract, testing::ValuesIn(kImplementations), TransportContract::nameOf);
INSTANTIATE_TEST_SUITE_P(Wires, TransportConcurrent, testing::ValuesIn(kImplementations), TransportContract::nameOf);

class LinuxWire : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    if (!wire_.isAvailable()) GTEST_SKIP() << "no dbus-daemon to start";
    wire_.start();
    connection_ = wire_.connect();
    ASSERT_TRUE(connection_);
  }

  std::optional<Value> roundTrip(const Value& value) {
    const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {value});
    if (!result || !*result) return std::nullopt;
    const Value* returned = (*result)->userInfo().find("arguments");
    if (!returned || !returned->asArray() || returned->asArray()->size() != 1) return std::nullopt;
    return returned->asArray()->front();
  }
  void answerWithArguments() {
    wire_.service.onPerform = [](TestService::Performed call) {
      call.reply(Error("echo", 1, {{"arguments", *call.arguments}}));
    };
  }

  ServiceOnWire wire_{GetParam()};
  std::unique_ptr<host::ServiceConnection> connection_;
};

INSTANTIATE_TEST_SUITE_P(Wires, LinuxWire, testing::Values(Kind::Socket, Kind::Bus),
                         [](const auto& kind) { return kind.param == Kind::Socket ? "Socket" : "Bus"; });

TEST_P(LinuxWire, BoundsTheUnansweredRequests) {
  host::TransportLimits limits;
  limits.unansweredRequests = 2;
  connection_.reset();
  wire_.listener.reset();
  ServiceOnWire narrow(GetParam(), limits);
  std::mutex mutex;
  std::vector<Reply<ErrorOrNil>> replies;
  narrow.service.onPerform = [&](TestService::Performed call) {
    const std::lock_guard lock(mutex);
    replies.push_back(std::move(call.reply));
  };
  narrow.start();
  const auto connection = narrow.connect();
  std::vector<std::thread> waiting;
  for (int i = 0; i < 2; ++i) {
    waiting.emplace_back([&, i] {
      EXPECT_TRUE(connection->performPrivilegedOperation(static_cast<std::uint64_t>(i), {}, nullptr, {}).has_value());
    });
  }
  EXPECT_TRUE(narrow.service.waitForEvent("perform 0"));
  EXPECT_TRUE(narrow.service.waitForEvent("perform 1"));
  const auto refused = connection->getVersionString();
  ASSERT_FALSE(refused.has_value());
  EXPECT_TRUE(refused.error().isPosix(posix::kNoBufferSpace));
  while (true) {
    const std::lock_guard lock(mutex);
    if (replies.size() == 2) break;
  }
  for (auto& reply : replies) reply(std::nullopt);
  for (std::thread& thread : waiting) thread.join();
  EXPECT_TRUE(connection->getVersionString().has_value());
}

TEST_P(LinuxWire, BoundsTheBytesOfUnansweredRequests) {
  host::TransportLimits limits;
  limits.unansweredBytes = 3 << 20;
  connection_.reset();
  wire_.listener.reset();
  ServiceOnWire narrow(GetParam(), limits);
  std::promise<Reply<ErrorOrNil>> firstReply;
  narrow.service.onPerform = [&](TestService::Performed call) {
    if (call.code == 1) return firstReply.set_value(std::move(call.reply));
    call.reply(std::nullopt);
  };
  narrow.start();
  const auto connection = narrow.connect();
  const Array large{Data(2 << 20, 7)};
  std::thread waiting([&] { EXPECT_TRUE(connection->performPrivilegedOperation(1, {}, nullptr, large).has_value()); });
  auto reply = firstReply.get_future().get();
  const auto refused = connection->performPrivilegedOperation(2, {}, nullptr, large);
  ASSERT_FALSE(refused.has_value());
  EXPECT_TRUE(refused.error().isPosix(posix::kNoBufferSpace));
  EXPECT_TRUE(connection->performPrivilegedOperation(3, {}, nullptr, {}).has_value()) << "a small one is still taken";
  reply(std::nullopt);
  waiting.join();
  EXPECT_TRUE(connection->performPrivilegedOperation(4, {}, nullptr, large).has_value()) << "an answer makes room";
}

TEST_P(LinuxWire, ARefusedConnectionIsReset) {
  wire_.service.accepts = false;
  connection_.reset();
  const auto other = wire_.tryToConnect();
  // On a socket the handshake already fails; on a bus the first request does.
  ASSERT_EQ(other.has_value(), GetParam() == Kind::Bus);
  if (!other) {
    EXPECT_TRUE(other.error().isPosix(posix::kConnectionReset)) << other.error().code();
  }
}

TEST_P(LinuxWire, TakesInNoMoreClientsOnceInvalidated) {
  EXPECT_TRUE(connection_->getVersionString().has_value());
  wire_.listener->invalidate();
  EXPECT_TRUE(wire_.listener->resume());
  if (GetParam() == Kind::Socket) {
    // Those that are in stay in.
    EXPECT_TRUE(connection_->getVersionString().has_value());
    EXPECT_EQ(access(wire_.socketPath().c_str(), F_OK), 0);
  } else {
    EXPECT_FALSE(connection_->getVersionString().has_value());
  }
}

TEST_P(LinuxWire, CarriesTheDeepestNestingOfErrors) {
  answerWithArguments();
  // The answer's user info holds the arguments in an array of its own.
  Value deep = Error("innermost", 1);
  for (int i = 0; i < 13; ++i) deep = Error("outer", i, {{"in", deep}});
  EXPECT_EQ(roundTrip(deep), deep);
}

TEST_P(LinuxWire, ReplacesTheZeroByteInText) {
  answerWithArguments();
  EXPECT_EQ(roundTrip(Value(std::string("a\xFF\0b", 4))), Value("a\xEF\xBF\xBD\xEF\xBF\xBD"
                                                                "b"));
}

TEST_P(LinuxWire, CarriesDatesToTheNanosecond) {
  answerWithArguments();
  for (const Date date : {Date{-1, 999999999}, Date{std::numeric_limits<std::int64_t>::max(), 0}}) {
    EXPECT_EQ(roundTrip(date), Value(date));
  }
}

TEST_P(LinuxWire, CarriesErrorsAmongArguments) {
  answerWithArguments();
  const Error error("domain", 5, {{"key", Error("inner", 1)}});
  EXPECT_EQ(roundTrip(error), Value(error));
}

}  // namespace
}  // namespace vantrell::tests
