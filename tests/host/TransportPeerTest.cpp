// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <thread>

#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/BusHandles.h"
#include "host/linux/PeerBus.h"
#include "host/linux/UnixAddress.h"
#include "host/linux/WireNames.h"
#include "tests/host/LinuxTransportFixture.h"

// What other, and hostile, clients may do on a socket of their own.

namespace vantrell::tests {
namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;

class TransportPeer : public testing::Test {
 protected:
  void SetUp() override { wire_.start(); }

  // A client that is nobody's library but sd-bus itself.
  host::Bus plainClient() {
    Result<host::Bus> bus = host::makeClientBus(rawConnection(wire_.socketPath()));
    EXPECT_TRUE(bus.has_value());
    EXPECT_GE(sd_bus_start(bus->get()), 0);
    return *std::move(bus);
  }
  void expectOthersAreServed() {
    const auto other = wire_.connect();
    ASSERT_TRUE(other);
    EXPECT_EQ(other->getVersionString().value(), "2.5");
  }
  // The name of the D-Bus error that a call with these arguments gets, or "" when it gets an answer.
  template <class... T>
  std::string errorOfCall(sd_bus* bus, const char* method, const char* types, T... arguments) {
    sd_bus_error error = SD_BUS_ERROR_NULL;
    sd_bus_message* reply = nullptr;
    sd_bus_call_method(bus, nullptr, host::kServicePath.text, host::kServiceInterface, method, &error, &reply, types,
                       arguments...);
    const host::BusMessage owner(reply);
    const std::string name = error.name ? error.name : "";
    sd_bus_error_free(&error);
    return name;
  }

  ServiceOnWire wire_{ServiceOnWire::Kind::Socket};
};

TEST_F(TransportPeer, DescribesItselfToIntrospection) {
  const host::Bus bus = plainClient();
  sd_bus_message* reply = nullptr;
  ASSERT_GE(sd_bus_call_method(bus.get(), nullptr, "/com/vantrell/PrivilegedTool",
                               "org.freedesktop.DBus.Introspectable", "Introspect", nullptr, &reply, ""),
            0);
  const host::BusMessage owner(reply);
  const char* text = nullptr;
  ASSERT_GT(sd_bus_message_read_basic(reply, 's', &text), 0);
  const std::string description = text;
  EXPECT_THAT(description, HasSubstr("<interface name=\"com.vantrell.QELPrivilegedToolProtocol\">"));
  EXPECT_THAT(description, HasSubstr("<method name=\"getVersionStringUsingReply\">\n"
                                     "   <arg type=\"s\" name=\"result\" direction=\"out\"/>"));
  EXPECT_THAT(description, HasSubstr("<method name=\"registerClientWithPID\">\n"
                                     "   <arg type=\"i\" name=\"pid\" direction=\"in\"/>\n"
                                     "   <arg type=\"ay\" name=\"salt\" direction=\"out\"/>"));
  EXPECT_THAT(description, HasSubstr("<method name=\"unregisterClientWithPID\">\n"
                                     "   <arg type=\"i\" name=\"pid\" direction=\"in\"/>\n"
                                     "   <annotation name=\"org.freedesktop.DBus.Method.NoReply\" value=\"true\"/>"));
  EXPECT_THAT(description, HasSubstr("<method name=\"performPrivilegedOperation\">\n"
                                     "   <arg type=\"t\" name=\"code\" direction=\"in\"/>\n"
                                     "   <arg type=\"ay\" name=\"token\" direction=\"in\"/>\n"
                                     "   <arg type=\"ah\" name=\"feedbackEndpoint\" direction=\"in\"/>\n"
                                     "   <arg type=\"av\" name=\"arguments\" direction=\"in\"/>\n"
                                     "   <arg type=\"a(sxa{sv})\" name=\"result\" direction=\"out\"/>"));
  EXPECT_THAT(description, HasSubstr("<method name=\"cancelPrivilegedOperation\">\n"
                                     "   <arg type=\"t\" name=\"code\" direction=\"in\"/>\n"
                                     "   <arg type=\"ay\" name=\"token\" direction=\"in\"/>\n"
                                     "   <arg type=\"av\" name=\"arguments\" direction=\"in\"/>\n"));
}

TEST_F(TransportPeer, TakesNumbersOfEveryWidth) {
  std::optional<Array> arguments;
  wire_.service.onPerform = [&](TestService::Performed call) {
    arguments = std::move(call.arguments);
    call.reply(std::nullopt);
  };
  const host::Bus bus = plainClient();
  EXPECT_EQ(
      errorOfCall(bus.get(), "performPrivilegedOperation", "tayahav", std::uint64_t{1}, 0, 0, 8, "y", 255, "n", -2, "q",
                  65535, "i", -4, "u", 4000000000U, "x", std::int64_t{-6}, "t", std::uint64_t{7}, "b", 1),
      "");
  ASSERT_TRUE(arguments);
  EXPECT_THAT(*arguments, ElementsAre(Value(255), Value(-2), Value(65535), Value(-4), Value(4000000000U), Value(-6),
                                      Value(7), Value(true)));
  EXPECT_EQ(arguments->back().asNumber()->kind(), Number::Kind::Boolean);
}

TEST_F(TransportPeer, RefusesArgumentsOfOtherTypesAndLivesOn) {
  const host::Bus bus = plainClient();
  const auto perform = [&](auto... arguments) {
    return errorOfCall(bus.get(), "performPrivilegedOperation", "tayahav", std::uint64_t{1}, 0, 0, 1, arguments...);
  };
  EXPECT_EQ(perform("o", "/path"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("g", "ay"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("as", 1, "text"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("v", "s", "text"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("(s)", "text"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("a{ss}", 1, "key", "value"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("av", 1, "o", "/path"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("a{sv}", 1, "key", "o", "/path"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("(xu)", std::int64_t{1}, 1000000000U), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform("(xu)", std::int64_t{1}, 999999999U), "");
  EXPECT_EQ(wire_.service.events().size(), 1U);
}

TEST_F(TransportPeer, RefusesOtherSignaturesMethodsObjectsAndInterfaces) {
  const host::Bus bus = plainClient();
  EXPECT_EQ(errorOfCall(bus.get(), "registerClientWithPID", "s", "seven"), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(errorOfCall(bus.get(), "registerClientWithPID", ""), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(errorOfCall(bus.get(), "performPrivilegedOperation", "t", std::uint64_t{1}), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(errorOfCall(bus.get(), "noSuchMethod", ""), SD_BUS_ERROR_UNKNOWN_METHOD);
  EXPECT_LT(sd_bus_call_method(bus.get(), nullptr, "/elsewhere", host::kServiceInterface, "getVersionStringUsingReply",
                               nullptr, nullptr, ""),
            0);
  EXPECT_EQ(errorOfCall(bus.get(), "getVersionStringUsingReply", ""), "");
  EXPECT_TRUE(wire_.service.events().empty());
}

TEST_F(TransportPeer, RefusesValuesNestedTooDeeplyAndLivesOn) {
  const host::Bus bus = plainClient();
  for (const int depth : {15, 16, 60}) {
    sd_bus_message* made = nullptr;
    ASSERT_GE(sd_bus_message_new_method_call(bus.get(), &made, nullptr, host::kServicePath.text,
                                             host::kServiceInterface, "performPrivilegedOperation"),
              0);
    const host::BusMessage call(made);
    ASSERT_GE(sd_bus_message_append(made, "tayah", std::uint64_t{1}, 0, 0), 0);
    ASSERT_GE(sd_bus_message_open_container(made, 'a', "v"), 0);
    for (int i = 0; i < depth; ++i) {
      ASSERT_GE(sd_bus_message_open_container(made, 'v', "av"), 0);
      ASSERT_GE(sd_bus_message_open_container(made, 'a', "v"), 0);
    }
    for (int i = 0; i < 2 * depth + 1; ++i) ASSERT_GE(sd_bus_message_close_container(made), 0);
    EXPECT_EQ(sd_bus_call(bus.get(), made, 0, nullptr, nullptr) >= 0, depth == 15);
  }
  EXPECT_EQ(errorOfCall(bus.get(), "getVersionStringUsingReply", ""), "");
}

TEST_F(TransportPeer, RefusesMoreValuesThanAMessageMayBring) {
  const host::FileDescriptor client = rawConnection(wire_.socketPath());
  ASSERT_TRUE(shakeHands(client.get()));
  // A request with five million arguments of a byte each, behind its code, an empty token and no endpoint.
  const std::uint32_t count = 5'000'000;
  const std::string arguments = [&] {
    std::string bytes;
    for (std::uint32_t i = 0; i < count; ++i) bytes += std::string_view("\1y\0\7", 4);
    return bytes;
  }();
  const auto number = [](std::uint32_t value) { return std::string(reinterpret_cast<const char*>(&value), 4); };
  const auto text = [&](char field, const char* type, const std::string& value) {
    std::string bytes = std::string(1, field) + "\1"s + type + "\0"s;
    bytes += number(static_cast<std::uint32_t>(value.size())) + value;
    return bytes + std::string(8 - bytes.size() % 8, '\0');
  };
  const std::string body = std::string(8, '\0') + number(0) + number(0) + number(4 * count) + arguments;
  const std::string fields = text(1, "o", "/com/vantrell/PrivilegedTool") +
                             text(2, "s", "com.vantrell.QELPrivilegedToolProtocol") +
                             text(3, "s", "performPrivilegedOperation") + "\10\1g\0\7tayahav\0"s;
  std::string message = "l\1\0\1"s + number(static_cast<std::uint32_t>(body.size())) + number(1) +
                        number(static_cast<std::uint32_t>(fields.size())) + fields;
  message.resize((message.size() + 7) / 8 * 8);
  sendAll(client.get(), message + body);
  std::string answer;
  while (!answer.contains("InvalidArgs")) {
    char bytes[1024];
    const ssize_t read = recv(client.get(), bytes, sizeof bytes, 0);
    ASSERT_GT(read, 0) << answer;
    answer.append(bytes, static_cast<std::size_t>(read));
  }
  EXPECT_TRUE(wire_.service.events().empty());
  expectOthersAreServed();
}

TEST_F(TransportPeer, TakesNoneOrOneFeedbackEndpoint) {
  std::vector<bool> endpoints;
  wire_.service.onPerform = [&](TestService::Performed call) {
    endpoints.push_back(call.endpoint != nullptr);
    call.reply(std::nullopt);
  };
  const host::Bus bus = plainClient();
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const host::FileDescriptor one(ends[0]);
  const host::FileDescriptor other(ends[1]);
  int pipes[2];
  ASSERT_EQ(pipe(pipes), 0);
  const host::FileDescriptor reading(pipes[0]);
  const host::FileDescriptor writing(pipes[1]);
  const auto perform = [&](auto... descriptors) {
    return errorOfCall(bus.get(), "performPrivilegedOperation", "tayahav", std::uint64_t{1}, 0,
                       static_cast<int>(sizeof...(descriptors)), descriptors..., 0);
  };
  EXPECT_EQ(perform(), "");
  EXPECT_EQ(perform(one.get()), "");
  EXPECT_EQ(perform(one.get(), other.get()), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform(writing.get()), SD_BUS_ERROR_INVALID_ARGS);
  EXPECT_EQ(perform(), "");
  EXPECT_THAT(endpoints, ElementsAre(false, true, false));
}

TEST_F(TransportPeer, DropsClientsThatSendGarbage) {
  for (const std::string& garbage : {"GET / HTTP/1.1\r\n\r\n"s, "\0AUTH ANONYMOUS\r\nBEGIN\r\n"s,
                                     std::string(70000, 'x'), "\0"s + std::string(70000, 'A')}) {
    const host::FileDescriptor client = rawConnection(wire_.socketPath());
    sendAll(client.get(), garbage);
    shutdown(client.get(), SHUT_WR);
    EXPECT_TRUE(readUntilClosed(client.get()));
  }
  expectOthersAreServed();
}

TEST_F(TransportPeer, DropsClientsThatSendGarbageBehindTheHandshake) {
  const host::FileDescriptor client = rawConnection(wire_.socketPath());
  ASSERT_TRUE(shakeHands(client.get()));
  sendAll(client.get(), std::string(4096, '\xA5'));
  EXPECT_TRUE(readUntilClosed(client.get()));
  expectOthersAreServed();
}

TEST_F(TransportPeer, AHalfMessageHoldsUpNobodyElse) {
  const host::FileDescriptor client = rawConnection(wire_.socketPath());
  ASSERT_TRUE(shakeHands(client.get()));
  // A call's header that announces a body of 100 megabytes.
  const char header[] = {'l', 1, 0, 1, 0, 0, 0x40, 6, 1, 0, 0, 0, 0x10, 0, 0, 0};
  sendAll(client.get(), std::string(header, sizeof header));
  expectOthersAreServed();
  const host::FileDescriptor silent = rawConnection(wire_.socketPath());
  expectOthersAreServed();
}

TEST_F(TransportPeer, DeliversWholeRequestsOfAClientThatHasGone) {
  {
    const host::Bus bus = plainClient();
    EXPECT_EQ(errorOfCall(bus.get(), "getVersionStringUsingReply", ""), "");
    // Nobody will be there for the answers, the first of which fails before the last request is read.
    for (int i = 0; i < 100; ++i) {
      sd_bus_call_method_async(bus.get(), nullptr, nullptr, host::kServicePath.text, host::kServiceInterface,
                               "registerClientWithPID", nullptr, nullptr, "i", i);
    }
    sd_bus_message* made = nullptr;
    ASSERT_GE(sd_bus_message_new_method_call(bus.get(), &made, nullptr, host::kServicePath.text,
                                             host::kServiceInterface, "unregisterClientWithPID"),
              0);
    const host::BusMessage call(made);
    ASSERT_GE(sd_bus_message_append(made, "i", 99), 0);
    ASSERT_GE(sd_bus_send(bus.get(), made, nullptr), 0);
    ASSERT_GE(sd_bus_flush(bus.get()), 0);
  }
  EXPECT_TRUE(wire_.service.waitForEvent("unregister 99"));
  expectOthersAreServed();
}

TEST_F(TransportPeer, AnAnswerToAClientThatHasGoneIsDropped) {
  std::mutex mutex;
  std::optional<Reply<ErrorOrNil>> kept;
  wire_.service.onPerform = [&](TestService::Performed call) {
    const std::lock_guard lock(mutex);
    kept = std::move(call.reply);
  };
  {
    const host::Bus bus = plainClient();
    ASSERT_GE(
        sd_bus_call_method_async(bus.get(), nullptr, nullptr, host::kServicePath.text, host::kServiceInterface,
                                 "performPrivilegedOperation", nullptr, nullptr, "tayahav", std::uint64_t{9}, 0, 0, 0),
        0);
    ASSERT_GE(sd_bus_flush(bus.get()), 0);
    ASSERT_TRUE(wire_.service.waitForEvent("perform 9"));
  }
  expectOthersAreServed();
  const std::lock_guard lock(mutex);
  ASSERT_TRUE(kept);
  (*kept)(Error("nobody", 1));
}

TEST_F(TransportPeer, AReplyLetGoUnusedLeavesTheClientWithoutAnAnswer) {
  wire_.service.onPerform = [](TestService::Performed) {};
  const host::Bus bus = plainClient();
  sd_bus_message* made = nullptr;
  ASSERT_GE(sd_bus_message_new_method_call(bus.get(), &made, nullptr, host::kServicePath.text, host::kServiceInterface,
                                           "performPrivilegedOperation"),
            0);
  const host::BusMessage call(made);
  ASSERT_GE(sd_bus_message_append(made, "tayahav", std::uint64_t{1}, 0, 0, 0), 0);
  EXPECT_EQ(sd_bus_call(bus.get(), made, 100000, nullptr, nullptr), -ETIMEDOUT);
  EXPECT_EQ(errorOfCall(bus.get(), "getVersionStringUsingReply", ""), "");
}

TEST_F(TransportPeer, LeavesRequestsUnreadWhileTheirSenderReadsNoAnswers) {
  host::TransportLimits limits;
  limits.waitingAnswerBytes = 1 << 20;
  ServiceOnWire narrow(ServiceOnWire::Kind::Socket, limits);
  std::atomic<int> performed = 0;
  const Error large("large", 1, {{"data", Data(1 << 20)}});
  narrow.service.onPerform = [&](TestService::Performed call) {
    ++performed;
    call.reply(large);
  };
  narrow.start();
  const auto other = narrow.connect();
  Result<host::Bus> made = host::makeClientBus(rawConnection(narrow.socketPath()));
  ASSERT_TRUE(made.has_value());
  sd_bus* bus = made->get();
  ASSERT_GE(sd_bus_start(bus), 0);
  int answered = 0;
  const auto count = [](sd_bus_message*, void* counter, sd_bus_error*) { return ++*static_cast<int*>(counter), 1; };
  constexpr int kRequests = 300;
  for (int i = 0; i < kRequests; ++i) {
    ASSERT_GE(
        sd_bus_call_method_async(bus, nullptr, nullptr, host::kServicePath.text, host::kServiceInterface,
                                 "performPrivilegedOperation", count, &answered, "tayahav", std::uint64_t{1}, 0, 0, 0),
        0);
  }
  ASSERT_GE(sd_bus_flush(bus), 0);
  // Others have their answers; in the meantime this client's service has come to a stop.
  int before = -1;
  while (before != performed) {
    before = performed;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_TRUE(other->getVersionString().has_value());
  }
  EXPECT_LT(performed, kRequests);
  while (answered < kRequests) {
    const int result = sd_bus_process(bus, nullptr);
    ASSERT_GE(result, 0);
    if (result == 0 && sd_bus_wait(bus, 20000000) <= 0) FAIL() << "no answer comes";
  }
  EXPECT_EQ(performed, kRequests);
}

TEST_F(TransportPeer, ClosesConnectionsBeyondTheLimitAndSaysSoOnce) {
  host::TransportLimits limits;
  limits.connections = 2;
  ServiceOnWire narrow(ServiceOnWire::Kind::Socket, limits);
  narrow.start();
  auto first = narrow.connect();
  const auto second = narrow.connect();
  for (int i = 0; i < 2; ++i) {
    const host::FileDescriptor third = rawConnection(narrow.socketPath());
    EXPECT_TRUE(readUntilClosed(third.get()));
  }
  EXPECT_TRUE(second->getVersionString().has_value());
  EXPECT_THAT(narrow.log.messages(), ElementsAre("Too many connections: new ones are closed."));
  // A place that becomes free is used again.
  first.reset();
  bool served = false;
  for (int i = 0; i < 200 && !served; ++i) {
    const auto again = narrow.client.connectToAddress(host::unixAddressOfPath(narrow.socketPath()));
    served = again && (*again)->getVersionString().has_value();
    if (!served) std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_TRUE(served);
}

TEST_F(TransportPeer, ASuspendedListenerLeavesClientsInTheSocket) {
  wire_.listener->suspend();
  const host::FileDescriptor client = rawConnection(wire_.socketPath());
  ASSERT_TRUE(client);
  sendAll(client.get(), "\0AUTH EXTERNAL\r\nDATA\r\n"s);
  char byte;
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(recv(client.get(), &byte, 1, MSG_DONTWAIT), -1);
  EXPECT_FALSE(wire_.listener->resume());
  EXPECT_EQ(recv(client.get(), &byte, 1, 0), 1);
}

TEST(UnixAddress, IsReadAsItIsWritten) {
  for (const std::string path : {"/run/x.sock", "/tmp/a b,c;d=e%/\xC3\xA4"}) {
    EXPECT_EQ(host::pathOfUnixAddress(host::unixAddressOfPath(path)).value(), path);
  }
  EXPECT_EQ(host::pathOfUnixAddress("unix:path=/a,guid=12").value(), "/a");
}

TEST(UnixAddress, RefusesOtherTransportsAndBadEscapes) {
  for (const char* address : {"", "tcp:host=localhost", "unixexec:path=/bin/true", "unix:path=", "unix:path=/a%",
                              "unix:path=/a%0", "unix:path=/a%zz", "unix:path=/a%00", "unix:abstract=x"}) {
    const auto path = host::pathOfUnixAddress(address);
    ASSERT_FALSE(path.has_value()) << address;
    EXPECT_TRUE(path.error().isPosix(posix::kInvalidArgument));
  }
}

TEST(LinuxClientTransport, ReportsWhyThereIsNoConnection) {
  host::LinuxClientTransport client;
  const TemporaryFolder folder;
  const auto code = [&](const std::string& address) { return client.connectToAddress(address).error().code(); };
  EXPECT_EQ(code("unix:path=" + folder.path("none")), posix::kNoEntry);
  EXPECT_EQ(code("unix:path=/" + std::string(200, 'x')), posix::kNameTooLong);
  EXPECT_EQ(code("tcp:host=localhost,port=1"), posix::kInvalidArgument);
  {
    const auto listening = host::listenOnSocket(folder.path("left"));
    ASSERT_TRUE(listening.has_value());
  }
  EXPECT_EQ(code("unix:path=" + folder.path("left")), posix::kConnectionRefused);
  EXPECT_EQ(client.connectToServiceOnBus("no name").error().code(), posix::kInvalidArgument);
}

TEST(LinuxClientTransport, ReportsAServiceThatSpeaksSomethingElse) {
  host::LinuxClientTransport client;
  const TemporaryFolder folder;
  const auto listening = host::listenOnSocket(folder.path("socket"));
  ASSERT_TRUE(listening.has_value());
  const std::jthread other([&] {
    const host::FileDescriptor accepted(accept(listening->get(), nullptr, nullptr));
    sendAll(accepted.get(), "220 mail.example ESMTP\r\n250 and more\r\n250 yet\r\n");
    readUntilClosed(accepted.get());
  });
  const auto connection = client.connectToAddress("unix:path=" + folder.path("socket"));
  ASSERT_FALSE(connection.has_value());
  EXPECT_EQ(connection.error().code(), posix::kProtocol);
}

}  // namespace
}  // namespace vantrell::tests
