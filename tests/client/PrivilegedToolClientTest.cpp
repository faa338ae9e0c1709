// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "client/ErrorText.h"
#include "client/PrivilegedToolClient.h"
#include "foundation/PosixCodes.h"
#include "tests/client/ClientFixture.h"

namespace vantrell {
namespace {

using namespace std::chrono_literals;
using Way = HelperLocation::Way;

constexpr std::uint64_t kNop = 9998;
constexpr std::uint64_t kDeleteFileobjects = 3;
class PrivilegedToolClientTest : public tests::ClientFixture {};
class PrivilegedToolClientConcurrentTest : public tests::ClientFixture {};

TEST_F(PrivilegedToolClientTest, AsksForTheVersionWithoutRegistration) {
  EXPECT_EQ(connect()->versionString(), "2.5");
  EXPECT_FALSE(service_.registered(context_.process->identifier()));
}

TEST_F(PrivilegedToolClientTest, MakesTokensThatPassTheServicesCheck) {
  std::optional<tests::FakeService::Request> seen;
  service_.answer = [&](const tests::FakeService::Request& request) -> Result<ErrorOrNil> {
    seen = request;
    return ErrorOrNil(Error::posix(5));
  };
  const auto client = registered();
  const Array arguments{"1", "0", "/x"};
  EXPECT_EQ(tests::answerIn(client->perform(kDeleteFileobjects, arguments)), Error::posix(5));
  ASSERT_TRUE(seen);
  EXPECT_EQ(seen->code, kDeleteFileobjects);
  EXPECT_EQ(seen->arguments, arguments);
  EXPECT_EQ(seen->check.code, 0u);
  EXPECT_EQ(seen->feedback, nullptr) << "nobody wants the feedback";
}

TEST_F(PrivilegedToolClientTest, LeavesWhenItGoesAndOnlyOnce) {
  {
    const auto client = registered();
    EXPECT_TRUE(service_.registered(context_.process->identifier()));
    EXPECT_EQ(client->unregisterClient(), std::nullopt);
    EXPECT_FALSE(service_.registered(context_.process->identifier()));
    EXPECT_EQ(client->unregisterClient(), std::nullopt);
  }
  EXPECT_EQ(service_.unregistrations(), 1);
  { const auto client = registered(); }
  EXPECT_EQ(service_.unregistrations(), 2);
  { const auto client = connect(); }
  EXPECT_EQ(service_.unregistrations(), 2) << "was never registered";
}

TEST_F(PrivilegedToolClientTest, PerformsNothingUnlessRegistered) {
  const auto answer = connect()->perform(kNop, {});
  ASSERT_FALSE(answer);
  EXPECT_TRUE(answer.error().isPosix(posix::kNotConnected));
}

TEST_F(PrivilegedToolClientTest, PerformsNothingThatIsNotInTheCatalogue) {
  const auto answer = registered()->perform(4711, {});
  ASSERT_FALSE(answer);
  EXPECT_TRUE(answer.error().isPosix(posix::kInvalidArgument));
}

TEST_F(PrivilegedToolClientTest, NamesAnExecutableThatYieldsNoKey) {
  const auto error = connect("/etc/hostname")->registerClient();
  ASSERT_TRUE(error);
  EXPECT_NE(textOfError(*error).description.find("/etc/hostname"), std::string::npos);
  EXPECT_NE(textOfError(*error).recoverySuggestion.find("--helper"), std::string::npos);
  EXPECT_FALSE(service_.registered(context_.process->identifier())) << "registered without a key";
}

TEST_F(PrivilegedToolClientTest, AsksAgainWhenTheServiceEndsAtThisMoment) {
  service_.registrationsToDrop = 3;
  const auto client = connect();
  EXPECT_EQ(client->registerClient(), std::nullopt);
  EXPECT_EQ(service_.connections(), 4);
  EXPECT_TRUE(client->perform(kNop, {}));
}

TEST_F(PrivilegedToolClientTest, GivesUpOnAServiceThatAlwaysEnds) {
  service_.registrationsToDrop = 1000;
  const auto error = connect()->registerClient();
  ASSERT_TRUE(error);
  EXPECT_TRUE(error->isPosix(posix::kConnectionReset));
}

TEST_F(PrivilegedToolClientTest, ReachesTheServiceByItsNameOnTheBus) {
  const auto client = PrivilegedToolClient::connect({Way::Bus, "the.name", tests::kHelper}, operations_, context_.host);
  ASSERT_TRUE(client);
  EXPECT_EQ(transport_->lastAddress, "the.name");
}

TEST_F(PrivilegedToolClientTest, SendsAnEndpointOnlyWithOperationsThatHaveFeedback) {
  bool hadFeedback = false;
  service_.answer = [&](const tests::FakeService::Request& request) -> Result<ErrorOrNil> {
    hadFeedback = request.feedback != nullptr;
    if (request.feedback) request.feedback->close();
    return std::nullopt;
  };
  const auto client = registered();
  EXPECT_TRUE(client->perform(kNop, {}, [](const Dictionary&) {}));
  EXPECT_FALSE(hadFeedback);
  EXPECT_TRUE(client->perform(kDeleteFileobjects, {"1", "0", "/x"}, [](const Dictionary&) {}));
  EXPECT_TRUE(hadFeedback);
}

TEST_F(PrivilegedToolClientConcurrentTest, WaitsForTheFeedbackThatComesAfterTheAnswer) {
  constexpr int kMessages = 50;
  std::jthread sender;
  service_.answer = [&](const tests::FakeService::Request& request) -> Result<ErrorOrNil> {
    sender = std::jthread([feedback = request.feedback] {
      for (int i = 0; i < kMessages; ++i) {
        std::this_thread::sleep_for(5ms);
        feedback->deliver({{"ProgressFraction", 0.5}});
      }
      feedback->deliver({{"FinalFeedbackMessage", true}});
      feedback->close();
    });
    return std::nullopt;
  };
  const auto client = registered();
  std::atomic<int> handled = 0;
  EXPECT_TRUE(client->perform(kDeleteFileobjects, {"1", "0", "/x"}, [&](const Dictionary&) { ++handled; }));
  EXPECT_EQ(handled, kMessages + 1);
}

TEST_F(PrivilegedToolClientConcurrentTest, CancelsTheRunningOperationByItsIdentity) {
  std::optional<Uuid> operation;
  service_.answer = [&](const tests::FakeService::Request& request) -> Result<ErrorOrNil> {
    operation = request.check.uuid;
    // The first cancellation may have been sent before this request; a later one ends the operation.
    service_.waitForCancellations(3);
    return ErrorOrNil(Error::posix(posix::kCanceled));
  };
  const auto client = registered();
  OperationCancellation cancellation;
  std::jthread canceller([&] {
    std::this_thread::sleep_for(20ms);
    cancellation.request();
  });
  EXPECT_EQ(tests::answerIn(client->perform(kDeleteFileobjects, {"1", "0", "/x"}, {}, &cancellation)),
            Error::posix(posix::kCanceled));
  ASSERT_TRUE(operation);
  for (const auto& result : service_.waitForCancellations(3)) {
    EXPECT_EQ(result.code, 0u);
    EXPECT_EQ(result.uuid, operation);
  }
}

TEST_F(PrivilegedToolClientTest, SendsNothingThatWasCancelledBefore) {
  bool asked = false;
  service_.answer = [&](const tests::FakeService::Request&) -> Result<ErrorOrNil> {
    asked = true;
    return std::nullopt;
  };
  const auto client = registered();
  OperationCancellation cancellation;
  cancellation.request();
  EXPECT_EQ(tests::answerIn(client->perform(kNop, {}, {}, &cancellation)), Error::posix(posix::kCanceled));
  EXPECT_FALSE(asked);
}

TEST_F(PrivilegedToolClientConcurrentTest, PerformsSeveralOperationsAtOnce) {
  service_.answer = [](const tests::FakeService::Request& request) -> Result<ErrorOrNil> {
    std::this_thread::sleep_for(1ms);
    if (request.check.code != 0) return ErrorOrNil(Error::posix(1));
    return std::nullopt;
  };
  const auto client = registered();
  std::atomic<int> succeeded = 0;
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] {
        for (int round = 0; round < 25; ++round) succeeded += tests::answerIn(client->perform(kNop, {})) ? 0 : 1;
      });
    }
  }
  EXPECT_EQ(succeeded, 100);
}

}  // namespace
}  // namespace vantrell
