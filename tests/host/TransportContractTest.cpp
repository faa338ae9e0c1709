// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <future>
#include <limits>
#include <thread>

#include <gmock/gmock.h>

#include "foundation/PosixCodes.h"
#include "tests/host/TransportContract.h"

// What a client may rely on, whatever carries its messages.

namespace vantrell::tests {

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TransportContract);

void TransportContract::SetUp() {
  if (!wire_->isAvailable()) GTEST_SKIP() << "this machine lacks what the wire needs";
  wire_->start();
  connection_ = wire_->connect();
  ASSERT_TRUE(connection_);
}

std::optional<Value> TransportContract::roundTrip(const Value& value) {
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {value});
  if (!result || !*result) return std::nullopt;
  const Value* returned = (*result)->userInfo().find("arguments");
  if (!returned || !returned->asArray() || returned->asArray()->size() != 1) return std::nullopt;
  return returned->asArray()->front();
}

void TransportContract::answerWithArguments() {
  wire_->service.onPerform = [](TestService::Performed call) {
    call.reply(Error("echo", static_cast<std::int64_t>(call.code), {{"arguments", *call.arguments}}));
  };
}

std::optional<Value> TransportContract::answered(const Value& value) {
  wire_->service.onPerform = [value](TestService::Performed call) {
    call.reply(Error("answer", 1, {{"value", value}}));
  };
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {});
  if (!result || !*result) return std::nullopt;
  const Value* returned = (*result)->userInfo().find("value");
  return returned ? std::optional(*returned) : std::nullopt;
}

namespace {

using testing::ElementsAre;

TEST_P(TransportContract, AnswersTheVersion) {
  EXPECT_EQ(connection_->getVersionString().value(), "2.5");
}

TEST_P(TransportContract, AnswersARegistrationWithTheSalt) {
  EXPECT_EQ(connection_->registerClientWithPID(7).value(), (Data{1, 2, 3, 7}));
  EXPECT_THAT(wire_->service.events(), ElementsAre("register 7"));
}

TEST_P(TransportContract, CarriesNegativeProcessIdentifiers) {
  EXPECT_TRUE(connection_->registerClientWithPID(std::numeric_limits<std::int32_t>::min()).has_value());
  EXPECT_THAT(wire_->service.events(), ElementsAre("register -2147483648"));
}

TEST_P(TransportContract, CarriesOneWayMessages) {
  EXPECT_FALSE(connection_->unregisterClientWithPID(7));
  EXPECT_FALSE(connection_->cancelPrivilegedOperation(12, {}, {}));
  EXPECT_TRUE(wire_->service.waitForEvent("cancel 12"));
  EXPECT_THAT(wire_->service.events(), ElementsAre("unregister 7", "cancel 12"));
}

TEST_P(TransportContract, CarriesCodeTokenAndArgumentsOfAnOperation) {
  std::uint64_t code = 0;
  Data token;
  std::optional<Array> arguments;
  bool endpoint = true;
  wire_->service.onPerform = [&](TestService::Performed call) {
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
  wire_->service.onPerform = [&](TestService::Performed call) { call.reply(sent); };
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
                          Date{-1, 500000000},
                          Date{1774000000, 250000000},
                          Array{},
                          Array{Value("a"), Value(1), Value(Array{Value(Data{1})})},
                          Array{Value(Dictionary{{"k", 1}}), Value(Dictionary{})},
                          Array{Value(Dictionary{}), Value(1)},
                          Dictionary{},
                          Dictionary{{"", "empty key"}, {"k", Dictionary{{"l", true}}}},
                          Dictionary{{"FileObjectInfo", Array{}}},
                          Dictionary{{"FileObjectInfo", Array{Value(Dictionary{{"p", "/"}})}}}};
  for (const Value& value : values) {
    const std::optional<Value> returned = roundTrip(value);
    ASSERT_TRUE(returned) << value.className();
    EXPECT_EQ(*returned, value) << value.className();
    if (const Number* sent = value.asNumber()) {
      EXPECT_EQ(returned->asNumber()->kind(), sent->kind());
    }
  }
}

TEST_P(TransportContract, CarriesErrorsWithinErrors) {
  const Error values[] = {Error("domain", -5), Error("domain", 5, {{"key", Error("inner", 1)}})};
  for (const Error& value : values) EXPECT_EQ(answered(value), Value(value));
}

TEST_P(TransportContract, ReplacesBytesThatAreNotTextByTheReplacementCharacter) {
  answerWithArguments();
  EXPECT_EQ(roundTrip(Value("a\xFF"
                            "b")),
            Value("a\xEF\xBF\xBD"
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
  Value deep = 1;
  for (int i = 0; i < 7; ++i) deep = Array{Value(Dictionary{{"in", deep}})};
  EXPECT_EQ(roundTrip(deep), deep);
}

TEST_P(TransportContract, LeavesOutOfAnAnswerWhatTheWireHasNoFormFor) {
  Value deep = 1;
  for (int i = 0; i < 30; ++i) deep = Array{deep};
  wire_->service.onPerform = [&](TestService::Performed call) {
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
  wire_->service.onPerform = [&](TestService::Performed call) {
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
  EXPECT_EQ(wire_->service.events(), expected);
}

TEST_P(TransportContract, AnswersFromAnotherThread) {
  std::promise<Reply<ErrorOrNil>> handedOver;
  wire_->service.onPerform = [&](TestService::Performed call) { handedOver.set_value(std::move(call.reply)); };
  std::thread worker([&] { handedOver.get_future().get()(Error("later", 3)); });
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {});
  worker.join();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, Error("later", 3));
}

TEST_P(TransportContract, SendsOneAnswerOnly) {
  wire_->service.onPerform = [](TestService::Performed call) {
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
  wire_->service.onPerform = [&](TestService::Performed call) { kept = std::move(call.reply); };
  std::thread ending([&] {
    EXPECT_TRUE(wire_->service.waitForEvent("perform 5"));
    wire_->listener.reset();
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
  wire_->service.onPerform = [&](TestService::Performed call) {
    const std::lock_guard lock(mutex);
    kept = std::move(call.reply);
    arrived.notify_all();
  };
  std::thread canceller([&] {
    std::unique_lock lock(mutex);
    ASSERT_TRUE(arrived.wait_for(lock, kPatience, [&] { return kept.has_value(); }));
    EXPECT_FALSE(connection_->cancelPrivilegedOperation(3, {}, {}));
    EXPECT_TRUE(wire_->service.waitForEvent("cancel 3"));
    // A second request has its answer while the first one waits.
    EXPECT_TRUE(connection_->getVersionString().has_value());
    (*kept)(Error::posix(posix::kCanceled));
  });
  const auto result = connection_->performPrivilegedOperation(3, {}, nullptr, {});
  canceller.join();
  ASSERT_TRUE(result.has_value());
  EXPECT_EQ(*result, Error::posix(posix::kCanceled));
}

TEST_P(TransportContract, ARefusedConnectionGetsNoService) {
  wire_->service.accepts = false;
  connection_.reset();
  // Where the client asks nothing of the service to connect, its first request fails.
  const auto other = wire_->tryToConnect();
  EXPECT_FALSE(other && (*other)->getVersionString());
}

TEST_P(TransportContract, AnInvalidatedListenerIsNotResumed) {
  wire_->listener->invalidate();
  EXPECT_TRUE(wire_->listener->resume());
}

TEST_P(TransportContract, AListenerThatWasSuspendedAndInvalidatedMayBeLetGo) {
  wire_->listener->suspend();
  wire_->listener->invalidate();
  wire_->listener.reset();
  EXPECT_TRUE(connection_->waitUntilClosed(kPatience));
}

TEST_P(TransportContract, TellsWhenTheServiceEnds) {
  EXPECT_TRUE(connection_->getVersionString().has_value());
  EXPECT_FALSE(connection_->waitUntilClosed(std::chrono::milliseconds(20)));
  wire_->listener.reset();
  EXPECT_TRUE(connection_->waitUntilClosed(kPatience));
  const auto version = connection_->getVersionString();
  ASSERT_FALSE(version.has_value());
  EXPECT_TRUE(version.error().isPosix(posix::kNotConnected)) << version.error().code();
}

TEST_P(TransportContract, ARequestFailsWhenTheServiceEndsBeforeItsAnswer) {
  std::optional<Reply<ErrorOrNil>> kept;
  wire_->service.onPerform = [&](TestService::Performed call) { kept = std::move(call.reply); };
  std::thread ending([&] {
    EXPECT_TRUE(wire_->service.waitForEvent("perform 1"));
    wire_->listener.reset();
  });
  const auto result = connection_->performPrivilegedOperation(1, {}, nullptr, {});
  ending.join();
  ASSERT_FALSE(result.has_value());
  EXPECT_TRUE(result.error().isPosix(posix::kConnectionReset)) << result.error().code();
}

TEST_P(TransportContract, CarriesFeedbackOfAnOperation) {
  FeedbackCollector collector;
  auto listener =
      wire_->clientTransport().makeFeedbackListener([&](const Dictionary& message) { collector.take(message); });
  ASSERT_TRUE(listener.has_value());
  wire_->service.onPerform = [&](TestService::Performed call) {
    auto feedback = wire_->serviceTransport().connectionToEndpoint(std::move(call.endpoint));
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
  auto listener = wire_->clientTransport().makeFeedbackListener([](const Dictionary&) { FAIL(); });
  ASSERT_TRUE(listener.has_value());
  EXPECT_TRUE(connection_->performPrivilegedOperation(1, {}, listener->get(), {}).has_value());
  EXPECT_TRUE((*listener)->waitUntilClosed(kPatience));
  // It has been given away.
  EXPECT_FALSE(connection_->performPrivilegedOperation(1, {}, listener->get(), {}).has_value());
}

}  // namespace
}  // namespace vantrell::tests
