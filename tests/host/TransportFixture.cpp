// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "tests/host/TransportFixture.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/linux/UnixAddress.h"

namespace vantrell::tests {

void TestService::note(std::string event) {
  const std::lock_guard lock(mutex_);
  events_.push_back(std::move(event));
  changed_.notify_all();
}

std::vector<std::string> TestService::events() const {
  const std::lock_guard lock(mutex_);
  return events_;
}

bool TestService::waitForEvent(const std::string& event) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kPatience, [&] { return std::ranges::find(events_, event) != events_.end(); });
}

void TestService::getVersionStringUsingReply(Reply<std::string> reply) {
  reply("2.5");
}

void TestService::registerClientWithPID(std::int32_t pid, Reply<Data> saltReply) {
  note("register " + std::to_string(pid));
  saltReply(Data{1, 2, 3, static_cast<std::uint8_t>(pid)});
}

void TestService::unregisterClientWithPID(std::int32_t pid) {
  note("unregister " + std::to_string(pid));
}

void TestService::performPrivilegedOperation(std::uint64_t code, Data token, std::unique_ptr<host::Endpoint> endpoint,
                                             std::optional<Array> arguments, Reply<ErrorOrNil> reply) {
  note("perform " + std::to_string(code));
  if (!onPerform) return reply(std::nullopt);
  onPerform({code, std::move(token), std::move(endpoint), std::move(arguments), std::move(reply)});
}

void TestService::cancelPrivilegedOperation(std::uint64_t code, Data, std::optional<Array>) {
  note("cancel " + std::to_string(code));
}

bool TestService::listenerShouldAcceptNewConnection(host::Listener&, host::Connection& newConnection) {
  if (!accepts) return false;
  newConnection.setExportedObject(*this);
  newConnection.resume();
  return true;
}

void FeedbackCollector::take(const Dictionary& message) {
  const std::lock_guard lock(mutex_);
  messages_.push_back(message);
  changed_.notify_all();
}

std::vector<Dictionary> FeedbackCollector::messages() const {
  const std::lock_guard lock(mutex_);
  return messages_;
}

bool FeedbackCollector::waitForCount(std::size_t count) const {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kPatience, [&] { return messages_.size() >= count; });
}

ServiceOnWire::ServiceOnWire(Kind kind, const host::TransportLimits& limits) : transport(log, limits), kind_(kind) {
  if (kind == Kind::Bus) bus_ = std::make_unique<PrivateBus>();
}

void ServiceOnWire::start() {
  if (kind_ == Kind::Bus) {
    listener = transport.makeListenerOnBus(kTestServiceName);
  } else {
    Result<host::FileDescriptor> socket = host::listenOnSocket(socketPath());
    ASSERT_TRUE(socket.has_value());
    listener = transport.makeListenerOnSocket(*std::move(socket));
  }
  listener->setDelegate(&service);
  const ErrorOrNil problem = listener->resume();
  ASSERT_FALSE(problem) << problem->code();
}

std::unique_ptr<host::ServiceConnection> ServiceOnWire::connect() {
  auto connection = kind_ == Kind::Bus ? client.connectToServiceOnBus(kTestServiceName)
                                       : client.connectToAddress(host::unixAddressOfPath(socketPath()));
  EXPECT_TRUE(connection.has_value()) << (connection ? 0 : connection.error().code());
  return connection ? *std::move(connection) : nullptr;
}

host::FileDescriptor rawConnection(const std::string& path) {
  Result<host::FileDescriptor> socket = host::connectToSocket(path);
  return socket ? *std::move(socket) : host::FileDescriptor();
}

void sendAll(int socket, const std::string& bytes) {
  for (std::size_t sent = 0; sent < bytes.size();) {
    const ssize_t count = send(socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return;
    sent += static_cast<std::size_t>(count);
  }
}

bool shakeHands(int socket) {
  using namespace std::string_literals;
  sendAll(socket, "\0AUTH EXTERNAL\r\nDATA\r\nNEGOTIATE_UNIX_FD\r\n"s);
  std::string answer;
  while (!answer.ends_with("AGREE_UNIX_FD\r\n")) {
    pollfd watched{socket, POLLIN, 0};
    char bytes[256];
    if (poll(&watched, 1, static_cast<int>(kPatience.count())) <= 0) return false;
    const ssize_t count = recv(socket, bytes, sizeof bytes, 0);
    if (count <= 0) return false;
    answer.append(bytes, static_cast<std::size_t>(count));
  }
  sendAll(socket, "BEGIN\r\n");
  return true;
}

bool readUntilClosed(int socket) {
  for (;;) {
    pollfd watched{socket, POLLIN, 0};
    char bytes[65536];
    if (poll(&watched, 1, static_cast<int>(kPatience.count())) <= 0) return false;
    const ssize_t count = recv(socket, bytes, sizeof bytes, 0);
    if (count == 0 || (count < 0 && errno == ECONNRESET)) return true;
    if (count < 0) return false;
  }
}

}  // namespace vantrell::tests
