// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "tests/host/LinuxTransportFixture.h"

#include <cerrno>

#include <poll.h>
#include <sys/socket.h>

#include "host/linux/UnixAddress.h"

namespace vantrell::tests {

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
  resumeListener();
}

Result<std::unique_ptr<host::ServiceConnection>> ServiceOnWire::tryToConnect() {
  return kind_ == Kind::Bus ? client.connectToServiceOnBus(kTestServiceName)
                            : client.connectToAddress(host::unixAddressOfPath(socketPath()));
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
