// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Registration, its end, and the end of the helper with it.

#include <gtest/gtest.h>

#include "tests/support/ServiceUnderTest.h"

namespace vantrell {
namespace {

using namespace tests::operation_code;

class Registration : public testing::Test {
 protected:
  tests::ServiceUnderTest service_;
};

TEST_F(Registration, TheVersionNeedsNone) {
  EXPECT_EQ(service_.connect()->getVersionString(), "2.5");
  EXPECT_TRUE(service_.tool().clients().registeredClients().empty());
}

TEST_F(Registration, AnswersWithASaltOfFourBytes) {
  const auto connection = service_.connect();
  const auto salt = connection->registerClientWithPID(4711);
  ASSERT_TRUE(salt);
  EXPECT_EQ(salt->size(), 4u);
  EXPECT_EQ(service_.tool().clients().registeredClients(), (std::vector<std::int32_t>{4711}));
  EXPECT_TRUE(service_.log().contains(host::LogLevel::Info, "Beginning work for client 4711."));
}

TEST_F(Registration, ASecondOneReplacesTheKey) {
  tests::HandMadeClient client(service_);
  client.registerClient();
  const auto firstKey = client.key();
  client.registerClient();
  EXPECT_NE(client.key(), firstKey);
  EXPECT_EQ(service_.tool().clients().registeredClients().size(), 1u);
  EXPECT_EQ(client.perform(kNop, {}), std::nullopt);
  client.key() = firstKey;
  const auto answer = client.perform(kNop, {});
  ASSERT_TRUE(answer) << "the first salt is useless now";
  EXPECT_EQ(answer->code(), 2);
}

TEST_F(Registration, UnregisteringAnUnknownClientOnlyLogsHowManyRemain) {
  tests::HandMadeClient client(service_);
  client.registerClient();
  EXPECT_EQ(client.connection().unregisterClientWithPID(5), std::nullopt);
  EXPECT_TRUE(service_.log().waitForMessage("1 clients remaining."));
  EXPECT_TRUE(service_.log().contains(host::LogLevel::Info, "Finishing work for client 5."));
  EXPECT_EQ(service_.process().exits(), 0);
  EXPECT_EQ(client.perform(kNop, {}), std::nullopt);
}

TEST_F(Registration, TheLastClientsLeavingEndsTheHelperWithStatus0) {
  tests::HandMadeClient one(service_, 1);
  tests::HandMadeClient two(service_, 2);
  one.registerClient();
  two.registerClient();
  EXPECT_EQ(one.connection().unregisterClientWithPID(1), std::nullopt);
  EXPECT_TRUE(service_.log().waitForMessage("1 clients remaining."));
  EXPECT_EQ(service_.process().exits(), 0);
  EXPECT_EQ(two.connection().unregisterClientWithPID(2), std::nullopt);
  EXPECT_TRUE(service_.log().waitForMessage("Terminating privileged tool."));
  EXPECT_TRUE(service_.log().contains(host::LogLevel::Info, "0 clients remaining."));
  for (int i = 0; i < 2000 && service_.process().exits() == 0; ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(service_.process().exits(), 1);
  EXPECT_EQ(service_.process().exitStatus(), 0);
}

TEST_F(Registration, TheHelperEndsEvenWhileAnOperationRuns) {
  tests::HandMadeClient client(service_);
  client.registerClient();
  std::thread working([&] { client.perform(kWaitForGate, {}); });
  ASSERT_TRUE(service_.gate.waitForArrivals(1));
  EXPECT_EQ(client.connection().unregisterClientWithPID(client.pid()), std::nullopt);
  EXPECT_TRUE(service_.log().waitForMessage("Terminating privileged tool."));
  EXPECT_EQ(service_.log().countContaining("was completed"), 0u);
  service_.gate.open();
  working.join();
}

TEST_F(Registration, WithoutAKeyPrefixNoEntryIsKeptAndRequestsAreRefused) {
  tests::HandMadeClient client(service_);
  client.registerClient();
  service_.tool().setKeyPrefix(std::nullopt);
  const auto salt = client.connection().registerClientWithPID(client.pid());
  ASSERT_TRUE(salt);
  EXPECT_EQ(salt->size(), 4u);
  EXPECT_TRUE(service_.tool().clients().registeredClients().empty());
  const auto answer = client.perform(kNop, {});
  ASSERT_TRUE(answer);
  EXPECT_EQ(*answer->userInfo().find("QELLocalizedRecoverySuggestionParameters"), Value(Array{"104"}));
}

TEST_F(Registration, NoSecondListenerIsServed) {
  // A listener that is not the service's own.
  class OtherListener final : public host::Listener {
   public:
    void setDelegate(host::ListenerDelegate*) override {}
    ErrorOrNil resume() override { return std::nullopt; }
    void suspend() override {}
    void invalidate() override {}
  } otherListener;
  class Untouched final : public host::Connection {
   public:
    void setExportedObject(QELPrivilegedToolProtocol&) override { touched = true; }
    void resume() override { touched = true; }
    bool touched = false;
  } connection;
  EXPECT_FALSE(service_.tool().listenerShouldAcceptNewConnection(otherListener, connection));
  EXPECT_FALSE(connection.touched);
  EXPECT_TRUE(service_.log().contains(host::LogLevel::Error,
                                      "QELPrivilegedTool: received bad XPC connection request. Ignoring ..."));
}

TEST_F(Registration, AClientThatVanishesStaysRegistered) {
  {
    tests::HandMadeClient client(service_);
    client.registerClient();
  }
  tests::HandMadeClient other(service_, 4712);
  other.registerClient();
  EXPECT_EQ(service_.tool().clients().registeredClients().size(), 2u);
}

}  // namespace
}  // namespace vantrell
