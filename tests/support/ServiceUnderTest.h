// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "client/RequestToken.h"
#include "core/ClassRegistry.h"
#include "core/QELPrivilegedTool.h"
#include "foundation/PropertyList.h"
#include "host/Host.h"
#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxTransport.h"
#include "tests/support/FakeHostParts.h"
#include "tests/support/ListeningSocket.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TestOperations.h"

namespace vantrell::tests {

/// The real transport, which listens on a socket of the test's instead of one that was passed to the process.
class SocketTransport final : public host::Transport {
 public:
  SocketTransport(int listeningSocket, host::SystemLog& systemLog)
      : transport_(systemLog), listeningSocket_(listeningSocket) {}

  Result<std::unique_ptr<host::Listener>> makeListener(std::string_view) override {
    return transport_.makeListenerOnSocket(std::move(listeningSocket_));
  }
  Result<std::shared_ptr<host::FeedbackConnection>> connectionToEndpoint(
      std::unique_ptr<host::Endpoint> endpoint) override {
    return transport_.connectionToEndpoint(std::move(endpoint));
  }

 private:
  host::LinuxTransport transport_;
  host::FileDescriptor listeningSocket_;
};

/// The service in this process, on a real socket, with the test's operations; its end is noted instead of happening.
class ServiceUnderTest {
 public:
  /// With another file system than the real one, unless it is null.
  explicit ServiceUnderTest(std::unique_ptr<host::FileSystem> fileSystem = nullptr) : host_(host::makeHost()) {
    // Other parts of the host refer to the real one.
    realFileSystem_ = std::move(host_.fileSystem);
    host_.fileSystem = fileSystem ? std::move(fileSystem) : std::make_unique<host::LinuxFileSystem>();
    auto log = std::make_unique<RecordingLog>();
    log_ = log.get();
    host_.systemLog = std::move(log);
    auto process = std::make_unique<FakeCurrentProcess>(std::move(host_.currentProcess));
    process_ = process.get();
    host_.currentProcess = std::move(process);
    auto cryptography = std::make_unique<FailingCryptography>(std::move(host_.cryptography));
    cryptography_ = cryptography.get();
    host_.cryptography = std::move(cryptography);
    host_.transport = std::make_unique<SocketTransport>(socket_.release(), *host_.systemLog);
    classes_.addImplementorClass(set_.nameOfImplementationClass(), [this](auto* set, auto* tool) {
      return std::make_unique<TestImplementor>(*set, *tool, gate);
    });
    tool_ = QELPrivilegedTool::initForOperationSet(&set_, &sysLog_.emplace(*host_.systemLog, "test", "standard"), host_,
                                                   classes_);
    if (!tool_ || tool_->startListening()) ADD_FAILURE() << "the service does not listen";
  }

  ~ServiceUnderTest() { gate.open(); }

  Gate gate;

  std::unique_ptr<host::ServiceConnection> connect() {
    auto connection = host_.clientTransport->connectToAddress(socket_.address());
    if (!connection) {
      ADD_FAILURE() << "no connection: " << connection.error().code();
      return nullptr;
    }
    return std::move(*connection);
  }

  RecordingLog& log() { return *log_; }
  FakeCurrentProcess& process() { return *process_; }
  FailingCryptography& cryptography() { return *cryptography_; }
  TestOperationSet& operationSet() { return set_; }
  QELPrivilegedTool& tool() { return *tool_; }
  host::Host& host() { return host_; }
  const std::string& socketPath() const { return socket_.path(); }

 private:
  ListeningSocket socket_;
  std::unique_ptr<host::FileSystem> realFileSystem_;
  host::Host host_;
  RecordingLog* log_;
  FakeCurrentProcess* process_;
  FailingCryptography* cryptography_;
  RecordingLog setLog_;
  TestOperationSet set_{setLog_};
  ClassRegistry classes_;
  std::optional<Log> sysLog_;
  std::unique_ptr<QELPrivilegedTool> tool_;
};

/// A client that makes every part of its requests itself, so that each can be wrong.
class HandMadeClient {
 public:
  explicit HandMadeClient(ServiceUnderTest& service, std::int32_t pid = 4711)
      : service_(service), pid_(pid), connection_(service.connect()) {}

  /// Registers and derives the key.
  void registerClient() {
    const auto salt = connection_->registerClientWithPID(pid_);
    ASSERT_TRUE(salt);
    ASSERT_EQ(salt->size(), 4u);
    key_ = service_.operationSet().keyForPrefix(*service_.tool().keyPrefix(), *salt).value();
  }

  Dictionary envelope(std::uint64_t code, const Array& arguments) const {
    auto data = service_.operationSet().standaloneDataForConcretePrivilegedOperation(code, arguments, service_.host());
    auto dictionary = *propertyListFromData(data.value()).value().root.asDictionary();
    dictionary.set("PID", pid_);
    return dictionary;
  }

  Data tokenForEnvelope(DataView envelope) const {
    return makeRequestToken(static_cast<std::uint64_t>(pid_), key_, envelope, *service_.host().cryptography).value();
  }
  Data tokenForEnvelope(const Dictionary& envelope) const {
    return tokenForEnvelope(binaryPropertyListFromValue(envelope).value());
  }
  Data token(std::uint64_t code, const Array& arguments) const { return tokenForEnvelope(envelope(code, arguments)); }

  /// The service's answer; a transport failure fails the test.
  ErrorOrNil perform(std::uint64_t code, DataView token, const Array& arguments,
                     host::FeedbackListener* feedback = nullptr) {
    auto answer = connection_->performPrivilegedOperation(code, token, feedback, arguments);
    if (!answer) {
      ADD_FAILURE() << "no answer: " << answer.error().code();
      return Error("no answer", -1);
    }
    return std::move(*answer);
  }
  ErrorOrNil perform(std::uint64_t code, const Array& arguments, host::FeedbackListener* feedback = nullptr) {
    return perform(code, token(code, arguments), arguments, feedback);
  }

  host::ServiceConnection& connection() { return *connection_; }
  std::int32_t pid() const { return pid_; }
  Data& key() { return key_; }

 private:
  ServiceUnderTest& service_;
  std::int32_t pid_;
  std::unique_ptr<host::ServiceConnection> connection_;
  Data key_;
};

/// A client's place for feedback that keeps what arrives.
class FeedbackCollector {
 public:
  explicit FeedbackCollector(host::ClientTransport& transport) {
    auto listener = transport.makeFeedbackListener([this](const Dictionary& message) {
      const std::lock_guard lock(mutex_);
      messages_.push_back(message);
    });
    if (!listener) {
      ADD_FAILURE() << "no feedback listener";
      return;
    }
    listener_ = std::move(*listener);
  }

  host::FeedbackListener* listener() { return listener_.get(); }

  /// All messages, once the service has closed the connection.
  std::vector<Dictionary> messages() {
    EXPECT_TRUE(listener_->waitUntilClosed(std::chrono::seconds(20)));
    const std::lock_guard lock(mutex_);
    return messages_;
  }

 private:
  std::mutex mutex_;
  std::vector<Dictionary> messages_;
  std::unique_ptr<host::FeedbackListener> listener_;
};

}  // namespace vantrell::tests
