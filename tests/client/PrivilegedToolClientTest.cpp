// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "client/ErrorText.h"
#include "client/FeedbackReception.h"
#include "client/InterruptReaction.h"
#include "client/PrivilegedToolClient.h"
#include "foundation/PosixCodes.h"
#include "tests/client/ClientHost.h"
#include "tests/client/FakeService.h"
#include "tests/client/FakeTerminal.h"

namespace vantrell {
namespace {

using namespace std::chrono_literals;
using Way = HelperLocation::Way;

constexpr std::uint64_t kNop = 9998;
constexpr std::uint64_t kDeleteFileobjects = 3;
constexpr char kHelper[] = "/fake/helper";
constexpr char kDescriptor[] = "000102030405060708090a0b0c0d0e0f10111213";

Data keyPrefix() {
  Data prefix(20);
  for (std::size_t i = 0; i < prefix.size(); ++i) prefix[i] = static_cast<std::uint8_t>(i);
  return prefix;
}

/// The service's answer, where there must be one.
ErrorOrNil answerIn(const Result<ErrorOrNil>& result) {
  if (result) return *result;
  ADD_FAILURE() << "no answer: " << result.error().code();
  return Error("no answer", -1);
}

class ClientFixture : public testing::Test {
 protected:
  ClientFixture() {
    context_.executables->descriptors[kHelper] = kDescriptor;
    auto transport = std::make_unique<tests::FakeClientTransport>(service_);
    transport_ = transport.get();
    context_.host.clientTransport = std::move(transport);
  }

  std::unique_ptr<PrivilegedToolClient> connect(const std::string& helper = kHelper) {
    auto client =
        PrivilegedToolClient::connect({Way::Address, "unix:path=/socket", helper}, operations_, context_.host);
    if (!client) {
      ADD_FAILURE() << "no connection";
      return nullptr;
    }
    return std::move(*client);
  }
  std::unique_ptr<PrivilegedToolClient> registered() {
    auto client = connect();
    if (client) {
      EXPECT_EQ(client->registerClient(), std::nullopt);
    }
    return client;
  }

  tests::ClientHost context_;
  QELPrivilegedToolOperationSetLM4 operations_{*context_.host.systemLog};
  tests::FakeService service_{context_.host, operations_, keyPrefix()};
  tests::FakeClientTransport* transport_;
};

class PrivilegedToolClientTest : public ClientFixture {};
class PrivilegedToolClientConcurrentTest : public ClientFixture {};
class FeedbackReceptionConcurrentTest : public ClientFixture {};

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
  EXPECT_EQ(answerIn(client->perform(kDeleteFileobjects, arguments)), Error::posix(5));
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
  const auto client = PrivilegedToolClient::connect({Way::Bus, "the.name", kHelper}, operations_, context_.host);
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
  EXPECT_EQ(answerIn(client->perform(kDeleteFileobjects, {"1", "0", "/x"}, {}, &cancellation)),
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
  EXPECT_EQ(answerIn(client->perform(kNop, {}, {}, &cancellation)), Error::posix(posix::kCanceled));
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
        for (int round = 0; round < 25; ++round) succeeded += answerIn(client->perform(kNop, {})) ? 0 : 1;
      });
    }
  }
  EXPECT_EQ(succeeded, 100);
}

TEST_F(FeedbackReceptionConcurrentTest, GivesUpWhenNothingComesAnyMore) {
  FeedbackReception reception;
  ASSERT_EQ(reception.open(*transport_, [](const Dictionary&) {}), std::nullopt);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(reception.waitForRest(100ms));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 100ms);
}

TEST_F(FeedbackReceptionConcurrentTest, WaitsForASlowReaderHoweverLong) {
  FeedbackReception reception;
  std::atomic<bool> handled = false;
  ASSERT_EQ(reception.open(*transport_,
                           [&](const Dictionary&) {
                             std::this_thread::sleep_for(500ms);
                             handled = true;
                           }),
            std::nullopt);
  auto* listener = dynamic_cast<tests::FakeFeedbackListener*>(reception.listener());
  const std::jthread service([&] {
    listener->deliver({});
    listener->close();
  });
  while (!reception.waitForRest(100ms) && !handled) {
    // The message had not begun yet.
  }
  EXPECT_TRUE(reception.waitForRest(10s));
  EXPECT_TRUE(handled);
}

TEST_F(FeedbackReceptionConcurrentTest, HasNothingToWaitForUnlessOpened) {
  FeedbackReception reception;
  EXPECT_EQ(reception.listener(), nullptr);
  EXPECT_TRUE(reception.waitForRest(10s));
}

class InterruptReactionTest : public ClientFixture {
 protected:
  tests::FakeTerminal terminal_;
  std::ostringstream out_;
  CommandContext command_{context_.host, terminal_, operations_, out_, out_};
};

TEST_F(InterruptReactionTest, CancelsFirstAndEndsTheProcessThen) {
  InterruptReaction reaction(command_);
  const std::shared_ptr<PrivilegedToolClient> client = registered();
  reaction.setClient(client);
  reaction.interrupt();
  EXPECT_TRUE(reaction.cancellation().isRequested());
  EXPECT_EQ(context_.process->exits(), 0);
  EXPECT_TRUE(service_.registered(context_.process->identifier()));

  reaction.interrupt();
  EXPECT_EQ(context_.process->exits(), 1);
  EXPECT_EQ(context_.process->exitStatus(), 1);
  EXPECT_FALSE(service_.registered(context_.process->identifier()));
}

TEST_F(InterruptReactionTest, DoesNotTakeAnotherCancellationForAnInterrupt) {
  InterruptReaction reaction(command_);
  reaction.cancellation().request();
  reaction.interrupt();
  EXPECT_EQ(context_.process->exits(), 0);
}

TEST_F(InterruptReactionTest, EndsTheProcessWithoutAClient) {
  InterruptReaction reaction(command_);
  reaction.interrupt();
  reaction.interrupt();
  EXPECT_EQ(context_.process->exits(), 1);
}

}  // namespace
}  // namespace vantrell
