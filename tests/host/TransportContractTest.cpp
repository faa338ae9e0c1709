// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <future>
#include <limits>
#include <thread>

#include <gmock/gmock.h>
#include <systemd/sd-bus.h>

#include "foundation/PosixCodes.h"
#include "host/linux/PeerBus.h"
#include "tests/host/TransportFixture.h"

// What a client may rely on, on a socket of its own and through a message bus.

namespace vantrell::tests {
namespace {

using testing::ElementsAre;
using Kind = ServiceOnWire::Kind;

class TransportContract : public testing::TestWithParam<Kind> {
 protected:
  void SetUp() override {
    if (!wire_.isAvailable()) GTEST_SKIP() << "no dbus-daemon to start";
    wire_.start();
    connection_ = wire_.connect();
    ASSERT_TRUE(connection_);
  }

  // Sends the value as an argument; the service sends its arguments back in an error's user info.
  std::optional<Value> roundTrip(const Value& value) {
    const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {value});
    if (!result || !*result) return std::nullopt;
    const Value* returned = (*result)->userInfo().find("arguments");
    if (!returned || !returned->asArray() || returned->asArray()->size() != 1) return std::nullopt;
    return returned->asArray()->front();
  }
  void answerWithArguments() {
    wire_.service.onPerform = [](TestService::Performed call) {
      call.reply(Error("echo", static_cast<std::int64_t>(call.code), {{"arguments", *call.arguments}}));
    };
  }

  ServiceOnWire wire_{GetParam()};
  std::unique_ptr<host::ServiceConnection> connection_;
};

INSTANTIATE_TEST_SUITE_P(Wires, TransportContract, testing::Values(Kind::Socket, Kind::Bus),
                         [](const auto& kind) { return kind.param == Kind::Socket ? "Socket" : "Bus"; });

TEST_P(TransportContract, AnswersTheVersion) {
  EXPECT_EQ(connection_->getVersionString().value(), "2.5");
}

TEST_P(TransportContract, AnswersARegistrationWithTheSalt) {
  EXPECT_EQ(connection_->registerClientWithPID(7).value(), (Data{1, 2, 3, 7}));
  EXPECT_THAT(wire_.service.events(), ElementsAre("register 7"));
}

TEST_P(TransportContract, CarriesNegativeProcessIdentifiers) {
  EXPECT_TRUE(connection_->registerClientWithPID(std::numeric_limits<std::int32_t>::min()).has_value());
  EXPECT_THAT(wire_.service.events(), ElementsAre("register -2147483648"));
}

TEST_P(TransportContract, CarriesOneWayMessages) {
  EXPECT_FALSE(connection_->unregisterClientWithPID(7));
  EXPECT_FALSE(connection_->cancelPrivilegedOperation(12, {}, {}));
  EXPECT_TRUE(wire_.service.waitForEvent("cancel 12"));
  EXPECT_THAT(wire_.service.events(), ElementsAre("unregister 7", "cancel 12"));
}

TEST_P(TransportContract, CarriesCodeTokenAndArgumentsOfAnOperation) {
  std::uint64_t code = 0;
  Data token;
  std::optional<Array> arguments;
  bool endpoint = true;
  wire_.service.onPerform = [&](TestService::Performed call) {
    code = call.code;
    token = call.token;
    arguments = call.arguments;
    endpoint = call.endpoint != nullptr;
    call.reply(std::nullopt);
  };
  const Data sent{0, 255, 7};
  const auto result = connection_->performPrivilegedOperation(UINT64_MAX, sent, nullptr, {Value("one"), Value(2)});
  ASSERT_TRUE(result.has_value());
  EXPECT_FALSE(*result);
  EXPECT_EQ(code, UINT64_MAX);
  EXPECT_EQ(token, sent);
  EXPECT_FALSE(endpoint);
  ASSERT_TRUE(arguments);
  EXPECT_THAT(*arguments, ElementsAre(Value("one"), Value(2)));
}

TEST_P(TransportContract, CarriesErrorsWithUserInfo) {
  const Error inner("NSPOSIXErrorDomain", -2);
  const Error sent("com.vantrell.Test", std::numeric_limits<std::int64_t>::min(),
                   {{"NSUnderlyingError", inner}, {"text", "ä"}});
  wire_.service.onPerform = [&](TestService::Performed call) { call.reply(sent); };
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {});
  ASSERT_TRUE(result.has_value());
  ASSERT_TRUE(*result);
  EXPECT_EQ(**result, sent);
}

TEST_P(TransportContract, CarriesEveryKindOfValueBothWays) {
  answerWithArguments();
  const Value values[] = {"",
                          "text",
                          "\xF0\x9F\x98\x80",
                          true,
                          false,
                          0,
                          -1,
                          std::numeric_limits<std::int64_t>::min(),
                          std::numeric_limits<std::uint64_t>::max(),
                          0.5,
                          -0.0,
                          std::numeric_limits<double>::infinity(),
                          Data{},
                          Data{0, 1, 255},
                          Date{-1, 999999999},
                          Date{std::numeric_limits<std::int64_t>::max(), 0},
                          Array{},
                          Array{Value("a"), Value(1), Value(Array{Value(Data{1})})},
                          Array{Value(Dictionary{{"k", 1}}), Value(Dictionary{})},
                          Array{Value(Dictionary{}), Value(1)},
                          Dictionary{},
                          Dictionary{{"", "empty key"}, {"k", Dictionary{{"l", true}}}},
                          Dictionary{{"FileObjectInfo", Array{}}},
                          Dictionary{{"FileObjectInfo", Array{Value(Dictionary{{"p", "/"}})}}},
                          Error("domain", -5),
                          Error("domain", 5, {{"key", Error("inner", 1)}})};
  for (const Value& value : values) {
    const std::optional<Value> returned = roundTrip(value);
    ASSERT_TRUE(returned) << value.className();
    EXPECT_EQ(*returned, value) << value.className();
    if (const Number* sent = value.asNumber()) {
      EXPECT_EQ(returned->asNumber()->kind(), sent->kind());
    }
  }
}

TEST_P(TransportContract, ReplacesBytesThatAreNotTextByTheReplacementCharacter) {
  answerWithArguments();
  EXPECT_EQ(roundTrip(Value(std::string("a\xFF\0b", 4))), Value("a\xEF\xBF\xBD\xEF\xBF\xBD"
                                                                "b"));
}

TEST_P(TransportContract, RefusesToSendArgumentsThatTheWireHasNoFormFor) {
  const auto null = connection_->performPrivilegedOperation(1, {}, nullptr, {Value()});
  ASSERT_FALSE(null.has_value());
  EXPECT_TRUE(null.error().isPosix(posix::kInvalidArgument));
  Value deep = 1;
  for (int i = 0; i < 16; ++i) deep = Array{deep};
  const auto nested = connection_->performPrivilegedOperation(1, {}, nullptr, {deep});
  ASSERT_FALSE(nested.has_value());
  EXPECT_TRUE(nested.error().isPosix(posix::kInvalidArgument));
  EXPECT_TRUE(connection_->getVersionString().has_value());
}

TEST_P(TransportContract, CarriesTheDeepestNestingThatIsSent) {
  answerWithArguments();
  // The answer's user info holds the arguments in an array of its own.
  Value deep = Error("innermost", 1);
  for (int i = 0; i < 13; ++i) deep = Error("outer", i, {{"in", deep}});
  EXPECT_EQ(roundTrip(deep), deep);
}

TEST_P(TransportContract, LeavesOutOfAnAnswerWhatTheWireHasNoFormFor) {
  Value deep = 1;
  for (int i = 0; i < 30; ++i) deep = Array{deep};
  wire_.service.onPerform = [&](TestService::Performed call) {
    call.reply(Error("d", 1, {{"deep", deep}, {"list", Array{Value(1), Value()}}, {"null", Value()}, {"z", 2}}));
  };
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {});
  ASSERT_TRUE(result.has_value() && *result);
  const Dictionary& info = (*result)->userInfo();
  EXPECT_FALSE(info.contains("null"));
  EXPECT_TRUE(info.contains("deep"));
  EXPECT_EQ(*info.find("list"), Value(Array{Value(1)}));
  EXPECT_EQ(*info.find("z"), Value(2));
}

TEST_P(TransportContract, CarriesSixtyMegabytesOfData) {
  Data large(std::size_t{60} << 20);
  for (std::size_t i = 0; i < large.size(); i += 4096) large[i] = static_cast<std::uint8_t>(i >> 12);
  Data arrived;
  wire_.service.onPerform = [&](TestService::Performed call) {
    arrived = *call.arguments->front().asData();
    call.reply(Error("d", 0, {{"size", arrived.size()}}));
  };
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {Value(large)});
  ASSERT_TRUE(result.has_value());
  EXPECT_TRUE(arrived == large);
}

TEST_P(TransportContract, RefusesMessagesLargerThanTheWireCarries) {
  const Data large(std::size_t{128} << 20);
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {Value(large)});
  ASSERT_FALSE(result.has_value());
  EXPECT_EQ(result.error().code(), 40);
  EXPECT_TRUE(connection_->getVersionString().has_value());
}

TEST_P(TransportContract, DeliversTheMessagesOfAConnectionInOrder) {
  std::vector<std::string> expected;
  for (int i = 0; i < 200; ++i) {
    EXPECT_FALSE(connection_->unregisterClientWithPID(i));
    expected.push_back("unregister " + std::to_string(i));
  }
  EXPECT_TRUE(connection_->getVersionString().has_value());
  EXPECT_EQ(wire_.service.events(), expected);
}

TEST_P(TransportContract, AnswersFromAnotherThread) {
  std::promise<Reply<ErrorOrNil>> handedOver;
  wire_.service.onPerform = [&](TestService::Performed call) { handedOver.set_value(std::move(call.reply)); };
  std::thread worker([&] { handedOver.get_future().get()(Error("later", 3)); });
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {});
  worker.join();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, Error("later", 3));
}

TEST_P(TransportContract, SendsOneAnswerOnly) {
  wire_.service.onPerform = [](TestService::Performed call) {
    call.reply(Error("first", 1));
    call.reply(Error("second", 2));
  };
  for (int i = 0; i < 3; ++i) {
    const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {});
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(*result, Error("first", 1));
  }
}

TEST_P(TransportContract, AnswersAfterTheEndOfTheConnectionAreDropped) {
  std::optional<Reply<ErrorOrNil>> kept;
  wire_.service.onPerform = [&](TestService::Performed call) { kept = std::move(call.reply); };
  std::thread ending([&] {
    EXPECT_TRUE(wire_.service.waitForEvent("perform 5"));
    wire_.listener.reset();
  });
  EXPECT_FALSE(connection_->performPrivilegedOperation(5, {}, nullptr, {}).has_value());
  ending.join();
  ASSERT_TRUE(kept);
  (*kept)(Error("nobody", 1));
}

TEST_P(TransportContract, CancelsWhileAnAnswerIsWaitedFor) {
  std::mutex mutex;
  std::condition_variable arrived;
  std::optional<Reply<ErrorOrNil>> kept;
  wire_.service.onPerform = [&](TestService::Performed call) {
    const std::lock_guard lock(mutex);
    kept = std::move(call.reply);
    arrived.notify_all();
  };
  std::thread canceller([&] {
    std::unique_lock lock(mutex);
    ASSERT_TRUE(arrived.wait_for(lock, kPatience, [&] { return kept.has_value(); }));
    EXPECT_FALSE(connection_->cancelPrivilegedOperation(3, {}, {}));
    EXPECT_TRUE(wire_.service.waitForEvent("cancel 3"));
    // A second request has its answer while the first one waits.
    EXPECT_TRUE(connection_->getVersionString().has_value());
    (*kept)(Error::posix(posix::kCanceled));
  });
  const auto result = connection_->performPrivilegedOperation(3, {}, nullptr, {});
  canceller.join();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, Error::posix(posix::kCanceled));
}

TEST_P(TransportContract, BoundsTheUnansweredRequests) {
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

TEST_P(TransportContract, BoundsTheBytesOfUnansweredRequests) {
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

TEST_P(TransportContract, ARefusedConnectionGetsNoService) {
  wire_.service.accepts = false;
  connection_.reset();
  host::LinuxClientTransport& client = wire_.client;
  const auto other = GetParam() == Kind::Bus ? client.connectToServiceOnBus(kTestServiceName)
                                             : client.connectToAddress("unix:path=" + wire_.socketPath());
  // On a socket the handshake already fails; on a bus the first request does.
  if (other) {
    EXPECT_FALSE((*other)->getVersionString().has_value());
  } else {
    EXPECT_TRUE(other.error().isPosix(posix::kConnectionReset)) << other.error().code();
  }
}

TEST_P(TransportContract, TakesInNoMoreClientsOnceInvalidated) {
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

TEST_P(TransportContract, TellsWhenTheServiceEnds) {
  EXPECT_TRUE(connection_->getVersionString().has_value());
  EXPECT_FALSE(connection_->waitUntilClosed(std::chrono::milliseconds(20)));
  wire_.listener.reset();
  EXPECT_TRUE(connection_->waitUntilClosed(kPatience));
  const auto version = connection_->getVersionString();
  ASSERT_FALSE(version.has_value());
  EXPECT_TRUE(version.error().isPosix(posix::kNotConnected)) << version.error().code();
}

TEST_P(TransportContract, ARequestFailsWhenTheServiceEndsBeforeItsAnswer) {
  std::optional<Reply<ErrorOrNil>> kept;
  wire_.service.onPerform = [&](TestService::Performed call) { kept = std::move(call.reply); };
  std::thread ending([&] {
    EXPECT_TRUE(wire_.service.waitForEvent("perform 1"));
    wire_.listener.reset();
  });
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {});
  ending.join();
  ASSERT_FALSE(result.has_value());
  EXPECT_TRUE(result.error().isPosix(posix::kConnectionReset)) << result.error().code();
}

TEST_P(TransportContract, CarriesFeedbackOfAnOperation) {
  FeedbackCollector collector;
  auto listener = wire_.client.makeFeedbackListener([&](const Dictionary& message) { collector.take(message); });
  ASSERT_TRUE(listener.has_value());
  wire_.service.onPerform = [&](TestService::Performed call) {
    auto feedback = wire_.transport.connectionToEndpoint(std::move(call.endpoint));
    ASSERT_TRUE(feedback.has_value());
    (*feedback)->processPrivilegedOperationFeedback({{"ProgressFraction", 0.0}});
    (*feedback)->resume();
    (*feedback)->processPrivilegedOperationFeedback({{"OutputData", Data{65}}, {"SequenceNumber", 0U}});
    (*feedback)->processPrivilegedOperationFeedback({{"FinalFeedbackMessage", true}});
    (*feedback)->invalidate();
    call.reply(std::nullopt);
  };
  const auto result = connection_->performPrivilegedOperation(1, {}, listener->get(), {});
  ASSERT_TRUE(result.has_value());
  EXPECT_TRUE((*listener)->waitUntilClosed(kPatience));
  EXPECT_THAT(collector.messages(), ElementsAre(Dictionary{{"ProgressFraction", 0.0}},
                                                Dictionary{{"OutputData", Data{65}}, {"SequenceNumber", 0U}},
                                                Dictionary{{"FinalFeedbackMessage", true}}));
}

TEST_P(TransportContract, AFeedbackListenerSeesTheServiceLetTheEndpointGo) {
  auto listener = wire_.client.makeFeedbackListener([](const Dictionary&) { FAIL(); });
  ASSERT_TRUE(listener.has_value());
  EXPECT_TRUE(connection_->performPrivilegedOperation(1, {}, listener->get(), {}).has_value());
  EXPECT_TRUE((*listener)->waitUntilClosed(kPatience));
  // It has been given away.
  EXPECT_FALSE(connection_->performPrivilegedOperation(1, {}, listener->get(), {}).has_value());
}

}  // namespace
}  // namespace vantrell::tests
