// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sys/types.h>

#include "host/Transport.h"
#include "host/posix/FileDescriptor.h"
#include "host/linux/LinuxClientTransport.h"
#include "host/linux/LinuxTransport.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

inline constexpr std::chrono::milliseconds kPatience = std::chrono::seconds(20);

/// The service as these tests need it: it keeps what arrives and answers as `onPerform` says (by default with nil).
class TestService final : public QELPrivilegedToolProtocol, public host::ListenerDelegate {
 public:
  struct Performed {
    std::uint64_t code;
    Data token;
    std::unique_ptr<host::Endpoint> endpoint;
    std::optional<Array> arguments;
    Reply<ErrorOrNil> reply;
  };

  void getVersionStringUsingReply(Reply<std::string> reply) override;
  void registerClientWithPID(std::int32_t pid, Reply<Data> saltReply) override;
  void unregisterClientWithPID(std::int32_t pid) override;
  void performPrivilegedOperation(std::uint64_t code, Data token, std::unique_ptr<host::Endpoint> feedbackEndpoint,
                                  std::optional<Array> arguments, Reply<ErrorOrNil> reply) override;
  void cancelPrivilegedOperation(std::uint64_t code, Data token, std::optional<Array> arguments) override;
  bool listenerShouldAcceptNewConnection(host::Listener& listener, host::Connection& newConnection) override;

  /// Set before clients connect.
  std::function<void(Performed)> onPerform;
  bool accepts = true;

  /// What arrived, as "register 7", "unregister 7", "cancel 12" …
  std::vector<std::string> events() const;
  bool waitForEvent(const std::string& event) const;

 private:
  void note(std::string event);

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<std::string> events_;
};

/// Keeps messages as they arrive.
class FeedbackCollector {
 public:
  void take(const Dictionary& message);
  std::vector<Dictionary> messages() const;
  bool waitForCount(std::size_t count) const;

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<Dictionary> messages_;
};

/// A service on a socket or on a message bus of its own, and connections to it.
class ServiceOnWire {
 public:
  enum class Kind { Socket, Bus };

  explicit ServiceOnWire(Kind kind, const host::TransportLimits& limits = {});

  /// False where this machine has no message bus to start.
  bool isAvailable() const noexcept { return kind_ == Kind::Socket || bus_->isRunning(); }
  void start();
  std::unique_ptr<host::ServiceConnection> connect();
  std::string socketPath() const { return folder_.path() + "/socket"; }

  RecordingLog log;
  TestService service;
  host::LinuxTransport transport;
  host::LinuxClientTransport client;
  std::unique_ptr<host::Listener> listener;

 private:
  const Kind kind_;
  TemporaryFolder folder_;
  std::unique_ptr<PrivateBus> bus_;
};

inline constexpr char kTestServiceName[] = "com.vantrell.TestService";

/// A socket connected to a path; negative where that fails.
host::FileDescriptor rawConnection(const std::string& path);
/// Takes the client's side of the handshake by hand. True when the service answers as it should.
bool shakeHands(int socket);
void sendAll(int socket, const std::string& bytes);
/// Reads until the far end closes or nothing comes for `kPatience`; true when it closed.
bool readUntilClosed(int socket);

}  // namespace vantrell::tests
