// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <optional>
#include <thread>

#include <gmock/gmock.h>
#include <poll.h>
#include <sys/socket.h>

#include "host/linux/BusHandles.h"
#include "host/linux/DescriptorEndpoint.h"
#include "host/linux/LinuxFeedbackListener.h"
#include "host/linux/PeerBus.h"
#include "host/linux/WireNames.h"
#include "host/linux/WireReader.h"
#include "host/linux/WireWriter.h"
#include "tests/host/FeedbackWireFixture.h"
#include "tests/host/LinuxTransportFixture.h"

// Feedback between this system's ends and a peer that is nobody's library but sd-bus itself, in both directions.

namespace vantrell::tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;

/// A client whose end is sd-bus.
class PlainFeedbackClient {
 public:
  PlainFeedbackClient() {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
    service_.reset(ends[1]);
    static const sd_bus_vtable kMethods[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD_WITH_NAMES("processPrivilegedOperationFeedback", "a{sv}", SD_BUS_PARAM(message), "", , arrived,
                                 SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
        SD_BUS_VTABLE_END,
    };
    Result<host::Bus> bus = host::makeServerBus(host::FileDescriptor(ends[0]));
    EXPECT_TRUE(bus.has_value());
    bus_ = *std::move(bus);
    EXPECT_GE(sd_bus_add_object_vtable(bus_.get(), nullptr, "/com/vantrell/PrivilegedOperationFeedback",
                                       "com.vantrell.QELPrivilegedOperationFeedbackProtocol", kMethods, this),
              0);
    EXPECT_GE(sd_bus_start(bus_.get()), 0);
  }

  std::unique_ptr<host::Endpoint> endpoint() { return std::make_unique<host::DescriptorEndpoint>(std::move(service_)); }
  sd_bus* bus() { return bus_.get(); }
  /// Until the service closes its end.
  void work() {
    while (sd_bus_process(bus_.get(), nullptr) >= 0) sd_bus_wait(bus_.get(), 1000);
  }
  void workUntil(std::size_t count) {
    while (messages.size() < count && sd_bus_process(bus_.get(), nullptr) >= 0) sd_bus_wait(bus_.get(), 1000);
  }

  std::vector<Dictionary> messages;
  bool allWereReadable = true;
  bool anyWantsAnswer = false;
  std::vector<std::uint64_t> serials;

 private:
  static int arrived(sd_bus_message* message, void* self, sd_bus_error*) {
    auto& client = *static_cast<PlainFeedbackClient*>(self);
    Dictionary dictionary;
    client.allWereReadable &= host::WireReader(message).dictionary(dictionary) && sd_bus_message_at_end(message, 1) > 0;
    client.anyWantsAnswer |= sd_bus_message_get_expect_reply(message) > 0;
    std::uint64_t serial = 0;
    sd_bus_message_get_cookie(message, &serial);
    client.serials.push_back(serial);
    client.messages.push_back(std::move(dictionary));
    return 1;
  }

  host::FileDescriptor service_;
  host::Bus bus_;
};

TEST(FeedbackToPlainPeer, EveryKindOfValueIsUnderstood) {
  RecordingLog log;
  host::LinuxTransport transport(log);
  PlainFeedbackClient client;
  auto connection = transport.connectionToEndpoint(client.endpoint());
  ASSERT_TRUE(connection.has_value());
  (*connection)->resume();
  (*connection)->processPrivilegedOperationFeedback(everyKind());
  (*connection)->processPrivilegedOperationFeedback({});
  // Neither a name that is no text nor what can't be sent keeps the rest from arriving.
  (*connection)->processPrivilegedOperationFeedback({{"Path", "a\xFFz"}, {"null", Null{}}, {"deep", nested(1, 16)}});
  connection->reset();
  client.work();
  EXPECT_TRUE(client.allWereReadable);
  EXPECT_FALSE(client.anyWantsAnswer);
  EXPECT_THAT(client.serials, ElementsAre(1U, 2U, 3U));
  ASSERT_EQ(client.messages.size(), 3U);
  EXPECT_EQ(client.messages[0], everyKind());
  EXPECT_TRUE(client.messages[1].empty());
  EXPECT_EQ(*client.messages[2].find("Path"), Value("a\xEF\xBF\xBDz"));
  EXPECT_EQ(*client.messages[2].find("deep"), nested(Array{}, 14));
  EXPECT_FALSE(client.messages[2].contains("null"));
}

TEST(FeedbackToPlainPeer, AMessageThatNoMessageCanHoldIsLeftOutAndTheNextArrives) {
  RecordingLog log;
  host::LinuxTransport transport(log);
  PlainFeedbackClient client;
  auto connection = transport.connectionToEndpoint(client.endpoint());
  ASSERT_TRUE(connection.has_value());
  (*connection)->resume();
  (*connection)->processPrivilegedOperationFeedback({{"OutputData", Data((std::size_t{64} << 20) + 1)}});
  const std::string half(std::size_t{65} << 20, 'x');
  (*connection)->processPrivilegedOperationFeedback({{"a", half}, {"b", half}});
  (*connection)->processPrivilegedOperationFeedback({{"next", 1}});
  connection->reset();
  client.work();
  EXPECT_THAT(client.messages, ElementsAre(Dictionary{{"next", 1}}));
  EXPECT_THAT(log.messages(), ElementsAre("A feedback message could not be put together.",
                                          "A feedback message could not be put together."));
}

TEST(FeedbackToPlainPeer, TheClientsOwnCallsAreAnsweredBetweenMessages) {
  RecordingLog log;
  host::LinuxTransport transport(log);
  PlainFeedbackClient client;
  auto connection = transport.connectionToEndpoint(client.endpoint());
  ASSERT_TRUE(connection.has_value());
  (*connection)->resume();
  (*connection)->processPrivilegedOperationFeedback({{"n", 1}});
  client.workUntil(1);
  // While large messages go out, so that some of the answers have to wait for the end of one.
  std::jthread sender([&] {
    for (int i = 0; i < 100; ++i) (*connection)->processPrivilegedOperationFeedback({{"OutputData", Data(300000)}});
  });
  for (int i = 0; i < 20; ++i) {
    EXPECT_GE(sd_bus_call_method(client.bus(), nullptr, "/", "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr, ""),
              0);
    EXPECT_LT(sd_bus_call_method(client.bus(), nullptr, "/", "com.vantrell.None", "none", nullptr, nullptr, ""), 0);
  }
  client.workUntil(101);
  EXPECT_EQ(client.messages.size(), 101U);
  EXPECT_TRUE(client.allWereReadable);
}

/// A service whose end is sd-bus.
class FeedbackFromPlainPeer : public testing::Test {
 protected:
  void SetUp() override {
    auto made = host::LinuxFeedbackListener::make([this](const Dictionary& message) { collector_.take(message); });
    ASSERT_TRUE(made.has_value());
    listener_ = *std::move(made);
    auto& listener = dynamic_cast<host::LinuxFeedbackListener&>(*listener_);
    Result<host::Bus> bus = host::makeClientBus(listener.takeEndpoint());
    ASSERT_TRUE(bus.has_value());
    bus_ = *std::move(bus);
    ASSERT_GE(sd_bus_start(bus_.get()), 0);
  }
  host::BusMessage call() {
    auto message = host::makeMethodCall(bus_.get(), nullptr, host::kFeedbackPath.text, host::kFeedbackInterface,
                                        host::kFeedbackMethod);
    EXPECT_TRUE(message.has_value());
    return *std::move(message);
  }
  host::BusMessage callWith(const Dictionary& dictionary) {
    host::BusMessage message = call();
    host::WireWriter writer(message.get(), host::Unsendable::Omit);
    writer.dictionary(dictionary);
    EXPECT_EQ(writer.status(), 0);
    return message;
  }

  FeedbackCollector collector_;
  std::unique_ptr<host::FeedbackListener> listener_;
  host::Bus bus_;
};

TEST_F(FeedbackFromPlainPeer, EveryKindOfValueIsUnderstood) {
  EXPECT_GE(sd_bus_send(bus_.get(), callWith(everyKind()).get(), nullptr), 0);
  EXPECT_GE(sd_bus_send(bus_.get(), callWith({}).get(), nullptr), 0);
  EXPECT_GE(sd_bus_flush(bus_.get()), 0);
  ASSERT_TRUE(collector_.waitForCount(2));
  EXPECT_THAT(collector_.messages(), ElementsAre(everyKind(), Dictionary{}));
}

TEST_F(FeedbackFromPlainPeer, WhatIsNoFeedbackIsAnsweredAndTheNextMessageArrives) {
  const auto errorOf = [&](host::BusMessage message) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    EXPECT_LT(sd_bus_call(bus_.get(), message.get(), 0, &error, nullptr), 0);
    const std::string name = error.name ? error.name : "";
    sd_bus_error_free(&error);
    return name;
  };
  host::BusMessage wrong = call();
  ASSERT_GE(sd_bus_message_append(wrong.get(), "a{sv}", 1, "key", "o", "/path"), 0);
  EXPECT_EQ(errorOf(std::move(wrong)), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(errorOf(call()), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_GE(sd_bus_call_method(bus_.get(), nullptr, "/", "org.freedesktop.DBus.Peer", "Ping", nullptr, nullptr, ""), 0);
  EXPECT_LT(sd_bus_call_method(bus_.get(), nullptr, "/", host::kFeedbackInterface, host::kFeedbackMethod, nullptr,
                               nullptr, "a{sv}", 0),
            0);
  EXPECT_GE(sd_bus_send(bus_.get(), callWith({{"n", 1}}).get(), nullptr), 0);
  EXPECT_GE(sd_bus_flush(bus_.get()), 0);
  ASSERT_TRUE(collector_.waitForCount(1));
  EXPECT_THAT(collector_.messages(), ElementsAre(Dictionary{{"n", 1}}));
}

TEST_F(FeedbackFromPlainPeer, TheListenerClosesWithItsPeer) {
  EXPECT_FALSE(listener_->waitUntilClosed(std::chrono::milliseconds(20)));
  bus_.reset();
  EXPECT_TRUE(listener_->waitUntilClosed(kPatience));
}

TEST_F(FeedbackFromPlainPeer, ThePeerSeesTheListenerGo) {
  listener_.reset();
  int result = 0;
  while (result >= 0) {
    result = sd_bus_process(bus_.get(), nullptr);
    if (result == 0) result = sd_bus_wait(bus_.get(), UINT64_MAX);
  }
}

/// The end that a service gets, as a plain socket.
host::FileDescriptor rawEndpointOf(host::FeedbackListener& listener) {
  return dynamic_cast<host::LinuxFeedbackListener&>(listener).takeEndpoint();
}

TEST(LinuxFeedbackListener, DropsAServiceThatSendsGarbage) {
  for (const std::string& garbage : {"GET / HTTP/1.1\r\n\r\n"s, "\0BEGIN\r\n"s, "\0"s + std::string(70000, 'A'),
                                     std::string(kHandshake) + std::string(4096, '\xA5')}) {
    FeedbackCollector collector;
    const auto listener =
        host::LinuxFeedbackListener::make([&](const Dictionary& message) { collector.take(message); });
    ASSERT_TRUE(listener.has_value());
    const auto service = rawEndpointOf(**listener);
    sendAll(service.get(), garbage);
    EXPECT_TRUE((*listener)->waitUntilClosed(kPatience));
    EXPECT_TRUE(readUntilClosed(service.get()));
    EXPECT_TRUE(collector.messages().empty());
  }
}

TEST(LinuxFeedbackListener, TakesMessagesThatComeTogetherWithTheHandshake) {
  FeedbackCollector collector;
  const auto listener = host::LinuxFeedbackListener::make([&](const Dictionary& message) { collector.take(message); });
  ASSERT_TRUE(listener.has_value());
  {
    const auto service = rawEndpointOf(**listener);
    sendAll(service.get(), std::string(kHandshake) + bytesOfCall({{"n", 1}}) + bytesOfCall({{"n", 2}}));
  }
  EXPECT_TRUE((*listener)->waitUntilClosed(kPatience));
  EXPECT_THAT(collector.messages(), ElementsAre(Dictionary{{"n", 1}}, Dictionary{{"n", 2}}));
}

TEST(LinuxFeedbackListener, DropsAServiceThatReadsNoAnswers) {
  const auto listener = host::LinuxFeedbackListener::make([](const Dictionary&) {});
  ASSERT_TRUE(listener.has_value());
  const auto service = rawEndpointOf(**listener);
  const std::string ping = handMadeMessage(
      {.flags = 0, .path = "/", .interface = "org.freedesktop.DBus.Peer", .member = "Ping", .signature = ""}, "");
  sendAll(service.get(), std::string(kHandshake));
  for (int i = 0; i < 20000 && !(*listener)->waitUntilClosed({}); ++i) {
    if (send(service.get(), ping.data(), ping.size(), MSG_NOSIGNAL | MSG_DONTWAIT) < 0) {
      (*listener)->waitUntilClosed(std::chrono::milliseconds(1));
    }
  }
  EXPECT_TRUE((*listener)->waitUntilClosed(kPatience));
}

}  // namespace
}  // namespace vantrell::tests
