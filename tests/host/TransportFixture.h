// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/ClientTransport.h"
#include "host/Transport.h"
#include "tests/support/RecordingLog.h"

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

/// A service on some wire, and connections to it.
class TransportWire {
 public:
  virtual ~TransportWire() = default;

  /// False where this machine lacks something that the wire needs.
  virtual bool isAvailable() const { return true; }
  /// Makes the listener and resumes it, with `service` as its delegate.
  virtual void start() = 0;
  virtual Result<std::unique_ptr<host::ServiceConnection>> tryToConnect() = 0;
  virtual host::Transport& serviceTransport() = 0;
  virtual host::ClientTransport& clientTransport() = 0;

  /// Null, and the test fails, where there is no connection.
  std::unique_ptr<host::ServiceConnection> connect();

  RecordingLog log;
  TestService service;
  std::unique_ptr<host::Listener> listener;

 protected:
  void resumeListener();
};

}  // namespace vantrell::tests
