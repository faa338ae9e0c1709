// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What happens between the acceptance of a request and its answer: feedback, cancellation, completion.

#include <gtest/gtest.h>

#include "tests/support/ServiceUnderTest.h"

namespace vantrell {
namespace {

using namespace tests::operation_code;

const Dictionary kOpeningProgress{{"ProgressFraction", 0.0}};
const Dictionary kHalfWay{{"ProgressFraction", 0.5}};
const Dictionary kOpeningOutput{{"OutputData", Data{}}, {"ErrorData", Data{}}};
const Dictionary kFinal{{"FinalFeedbackMessage", true}};

class Execution : public testing::Test {
 protected:
  void SetUp() override { client_.registerClient(); }

  tests::ServiceUnderTest service_;
  tests::HandMadeClient client_{service_};
  tests::FeedbackCollector feedback_{*service_.host().clientTransport};
};

TEST_F(Execution, ProgressBeginsWith0AndEndsWithTheFinalMessage) {
  service_.gate.open();
  EXPECT_EQ(client_.perform(kWaitForGate, {}, feedback_.listener()), std::nullopt);
  EXPECT_EQ(feedback_.messages(), (std::vector{kOpeningProgress, kHalfWay, kFinal}));
  const auto& log = service_.log();
  EXPECT_TRUE(log.contains(host::LogLevel::Info, "About to configure feedback protocol."));
  EXPECT_TRUE(log.contains(host::LogLevel::Info, "About to open return connection for feedback (progress option 1)."));
  EXPECT_TRUE(log.contains("Operation wait-gate is about to be executed with feedback option enabled."));
  EXPECT_TRUE(log.contains(host::LogLevel::Info, "Sending final feedback message."));
  EXPECT_EQ(log.countContaining("Suspending feedback connection 0x"), 1u);
}

TEST_F(Execution, TheConnectionClosesNoSoonerThan250MillisecondsAfterTheFinalMessage) {
  service_.gate.open();
  client_.perform(kWaitForGate, {}, feedback_.listener());
  EXPECT_EQ(service_.process().milliSecondsSlept(), 250u);
}

TEST_F(Execution, LiveOutputBeginsWithBothStreamsEmpty) {
  EXPECT_EQ(client_.perform(kLiveOutput, {"one", "two"}, feedback_.listener()), std::nullopt);
  EXPECT_EQ(feedback_.messages(),
            (std::vector{kOpeningOutput, Dictionary{{"OutputData", Data{'o', 'n', 'e'}}, {"SequenceNumber", 0u}},
                         Dictionary{{"OutputData", Data{'t', 'w', 'o'}}, {"SequenceNumber", 1u}}, kFinal}));
  EXPECT_TRUE(service_.log().contains("About to open return connection for feedback (progress option 0)."));
}

TEST_F(Execution, WithoutAnEndpointNothingIsOpenedAndTheOperationGetsNoConnection) {
  EXPECT_EQ(client_.perform(kLiveOutput, {"one"}), Error::posix(57));
  EXPECT_EQ(service_.log().countContaining("feedback protocol"), 0u);
  EXPECT_EQ(service_.process().milliSecondsSlept(), 0u);
  EXPECT_TRUE(service_.log().contains("Operation live-output is about to be executed with feedback option disabled."));
}

TEST_F(Execution, AnOperationWithoutFeedbackIgnoresAnEndpoint) {
  EXPECT_EQ(client_.perform(kNop, {}, feedback_.listener()), std::nullopt);
  EXPECT_TRUE(feedback_.messages().empty());
}

TEST_F(Execution, TheFinalMessageIsSentAfterAnException) {
  const auto answer = client_.perform(kRaiseStandard, {"reason"}, feedback_.listener());
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->code(), 8);
  EXPECT_EQ(feedback_.messages(), (std::vector{kOpeningProgress, kFinal}));
}

TEST_F(Execution, WithoutImplementationTheConnectionEndsWithoutAFinalMessage) {
  const auto answer = client_.perform(kNotImplemented, {}, feedback_.listener());
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->code(), 9);
  EXPECT_EQ(feedback_.messages(), (std::vector{kOpeningProgress}));
}

TEST_F(Execution, ARunningOperationSeesItsCancellation) {
  const auto token = client_.token(kWaitForCancel, {"x"});
  ErrorOrNil answer;
  std::thread working([&] { answer = client_.perform(kWaitForCancel, token, {"x"}, feedback_.listener()); });
  ASSERT_TRUE(service_.gate.waitForArrivals(1));
  EXPECT_EQ(client_.connection().cancelPrivilegedOperation(kWaitForCancel, token, {"x"}), std::nullopt);
  working.join();
  EXPECT_EQ(answer, Error::posix(89));
  EXPECT_EQ(feedback_.messages(), (std::vector{kOpeningProgress, kFinal}));
}

TEST_F(Execution, ACancellationWithAnotherTokenDoesNothing) {
  const auto token = client_.token(kWaitForGate, {});
  ErrorOrNil answer = Error("unanswered", 1);
  std::thread working([&] { answer = client_.perform(kWaitForGate, token, {}); });
  ASSERT_TRUE(service_.gate.waitForArrivals(1));
  auto damaged = token;
  damaged.back() ^= 1;
  auto old = client_.envelope(kWaitForGate, {});
  old.set("Time", Date::fromSecondsSinceReferenceDate(Date::now().secondsSinceReferenceDate() - 31));
  EXPECT_EQ(client_.connection().cancelPrivilegedOperation(kWaitForGate, damaged, {}), std::nullopt);
  EXPECT_EQ(client_.connection().cancelPrivilegedOperation(kWaitForGate, client_.token(kWaitForGate, {}), {}),
            std::nullopt)
      << "a token of another operation";
  EXPECT_EQ(client_.connection().cancelPrivilegedOperation(kNop, token, {}), std::nullopt);
  EXPECT_EQ(client_.connection().cancelPrivilegedOperation(kWaitForGate, client_.tokenForEnvelope(old), {}),
            std::nullopt);
  const auto entries = service_.log().entries().size();
  EXPECT_EQ(client_.connection().getVersionString(), "2.5") << "cancellations before it have been handled";
  EXPECT_EQ(service_.log().entries().size(), entries) << "a cancellation logs nothing";
  service_.gate.open();
  working.join();
  EXPECT_EQ(answer, std::nullopt);
}

TEST_F(Execution, ACancellationWithATokenThatIsTooOldDoesNothing) {
  auto envelope = client_.envelope(kWaitForCancel, {});
  const auto token = client_.tokenForEnvelope(envelope);
  envelope.set("Time", Date::fromSecondsSinceReferenceDate(Date::now().secondsSinceReferenceDate() - 31));
  ErrorOrNil answer = Error("unanswered", 1);
  std::thread working([&] { answer = client_.perform(kWaitForCancel, token, {}); });
  ASSERT_TRUE(service_.gate.waitForArrivals(1));
  EXPECT_EQ(client_.connection().cancelPrivilegedOperation(kWaitForCancel, client_.tokenForEnvelope(envelope), {}),
            std::nullopt);
  EXPECT_EQ(client_.connection().getVersionString(), "2.5");
  EXPECT_EQ(service_.log().countContaining("was completed"), 0u);
  EXPECT_EQ(client_.connection().cancelPrivilegedOperation(kWaitForCancel, token, {}), std::nullopt);
  working.join();
  EXPECT_EQ(answer, Error::posix(89));
}

TEST_F(Execution, AQueuedOperationThatIsCancelledNeverRunsAndIsAnsweredWithCancelled) {
  // Fill the queue, so that one more operation has to wait for its turn.
  const auto width = OperationQueue::kDefaultMaximumWidth;
  std::atomic<std::size_t> answered = 0;
  for (std::size_t i = 0; i < width; ++i) {
    service_.tool().performPrivilegedOperation(kWaitForGate, client_.token(kWaitForGate, {}), nullptr, Array{},
                                               [&](ErrorOrNil) { ++answered; });
  }
  ASSERT_TRUE(service_.gate.waitForArrivals(static_cast<int>(width)));
  const auto token = client_.token(kWaitForGate, {"late"});
  ErrorOrNil answer;
  std::thread late([&] { answer = client_.perform(kWaitForGate, token, {"late"}, feedback_.listener()); });
  ASSERT_TRUE(service_.log().waitForMessageContaining("Operation wait-gate enqueued", width + 1));
  EXPECT_EQ(client_.connection().cancelPrivilegedOperation(kWaitForGate, token, {"late"}), std::nullopt);
  EXPECT_EQ(client_.connection().getVersionString(), "2.5");
  service_.gate.open();
  late.join();
  EXPECT_EQ(answer, Error::posix(89));
  EXPECT_EQ(feedback_.messages(), (std::vector{kOpeningProgress, kFinal}));
  EXPECT_EQ(service_.log().countContaining("Operation wait-gate is about to be executed"), width);
  for (int i = 0; i < 20000 && answered < width; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_EQ(answered, width);
}

TEST_F(Execution, ASecondRequestWithOneTokenTakesTheFirstOnesAnswer) {
  const auto token = client_.token(kWaitForGate, {});
  std::atomic<int> first = 0;
  std::atomic<int> second = 0;
  service_.tool().performPrivilegedOperation(kWaitForGate, token, nullptr, Array{}, [&](ErrorOrNil) { ++first; });
  service_.tool().performPrivilegedOperation(kWaitForGate, token, nullptr, Array{}, [&](ErrorOrNil) { ++second; });
  ASSERT_TRUE(service_.gate.waitForArrivals(2));
  service_.gate.open();
  EXPECT_TRUE(service_.log().waitForMessageContaining("completed but is no longer registered as being active."));
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
}

TEST_F(Execution, RequestsOfOneClientRunAtTheSameTime) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([&] { EXPECT_EQ(client_.perform(kWaitForGate, {}), std::nullopt); });
  }
  EXPECT_TRUE(service_.gate.waitForArrivals(8));
  service_.gate.open();
  for (auto& thread : threads) thread.join();
}

TEST_F(Execution, AClientThatLeavesWhileItsOperationRunsHarmsNobody) {
  {
    tests::HandMadeClient leaving(service_, 4712);
    leaving.registerClient();
    std::thread working([&] {
      const auto answer = leaving.connection().performPrivilegedOperation(kWaitForGate, leaving.token(kWaitForGate, {}),
                                                                          feedback_.listener(), {});
      EXPECT_TRUE(answer);
    });
    ASSERT_TRUE(service_.gate.waitForArrivals(1));
    service_.gate.open();
    working.join();
  }
  EXPECT_EQ(client_.perform(kNop, {}), std::nullopt);
}

}  // namespace
}  // namespace vantrell
