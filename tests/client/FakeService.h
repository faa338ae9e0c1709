// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "catalogue/QELPrivilegedToolOperationSetLM4.h"
#include "foundation/PosixCodes.h"
#include "host/Host.h"

namespace vantrell::tests {

/// A feedback listener without a wire: the service of the test hands messages over directly.
class FakeFeedbackListener final : public host::FeedbackListener {
 public:
  explicit FakeFeedbackListener(std::function<void(const Dictionary&)> handler) : handler_(std::move(handler)) {}

  void deliver(const Dictionary& message) { handler_(message); }
  void close() {
    const std::lock_guard guard(lock_);
    closed_ = true;
    changed_.notify_all();
  }
  bool waitUntilClosed(std::chrono::milliseconds limit) override {
    std::unique_lock guard(lock_);
    return changed_.wait_for(guard, limit, [this] { return closed_; });
  }

 private:
  std::function<void(const Dictionary&)> handler_;
  std::mutex lock_;
  std::condition_variable changed_;
  bool closed_ = false;
};

/// A service that checks tokens as the real one does and otherwise does what the test says. Safe from any thread.
class FakeService {
 public:
  struct Request {
    std::uint64_t code;
    Array arguments;
    FakeFeedbackListener* feedback;
    QELPrivilegedToolOperationSet::CheckResult check;
  };
  using Answer = std::function<Result<ErrorOrNil>(const Request&)>;

  FakeService(host::Host& host, const QELPrivilegedToolOperationSet& operations, Data keyPrefix)
      : host_(host), operations_(operations), keyPrefix_(std::move(keyPrefix)) {}

  Answer answer = [](const Request&) -> Result<ErrorOrNil> { return std::nullopt; };
  int registrationsToDrop = 0;

  /// The check of a token as the service makes it; 103 to 105 as there.
  QELPrivilegedToolOperationSet::CheckResult check(DataView token, std::uint64_t code, const Array& arguments) {
    if (token.size() < 28) return {.code = 101};
    const auto body = token.subspan(20);
    const auto digest = host_.cryptography->sha1(body);
    if (!std::equal(digest->begin(), digest->end(), token.begin())) return {.code = 103};
    std::uint64_t pid = 0;
    for (std::size_t i = 0; i < 8; ++i) pid |= std::uint64_t{body[i]} << (8 * i);
    const auto key = operations_.keyForPrefix(keyPrefix_, salt_);
    if (!registered(static_cast<std::int32_t>(pid))) return {.code = 104};
    Data plain(body.size() - 8);
    if (host_.cryptography->rc4(*key, body.subspan(8), plain)) return {.code = 105};
    return operations_.checkPresentRequestFromPID(
        pid, code, arguments, operations_.operationDescriptionFromStandaloneData(plain), Date::now());
  }

  Result<Data> registerClient(std::int32_t pid) {
    const std::lock_guard guard(lock_);
    if (registrationsToDrop > 0) {
      --registrationsToDrop;
      return posixFailure(posix::kConnectionReset);
    }
    registered_.push_back(pid);
    return salt_;
  }
  void unregisterClient(std::int32_t pid) {
    const std::lock_guard guard(lock_);
    std::erase(registered_, pid);
    ++unregistrations_;
  }
  bool registered(std::int32_t pid) {
    const std::lock_guard guard(lock_);
    return std::ranges::find(registered_, pid) != registered_.end();
  }
  int unregistrations() {
    const std::lock_guard guard(lock_);
    return unregistrations_;
  }
  void noteConnection() {
    const std::lock_guard guard(lock_);
    ++connections_;
  }
  int connections() {
    const std::lock_guard guard(lock_);
    return connections_;
  }

  void cancel(QELPrivilegedToolOperationSet::CheckResult result) {
    const std::lock_guard guard(lock_);
    cancellations_.push_back(result);
    changed_.notify_all();
  }
  std::vector<QELPrivilegedToolOperationSet::CheckResult> waitForCancellations(std::size_t count) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, std::chrono::seconds(20), [&] { return cancellations_.size() >= count; });
    return cancellations_;
  }

 private:
  host::Host& host_;
  const QELPrivilegedToolOperationSet& operations_;
  const Data keyPrefix_;
  const Data salt_{1, 2, 3, 4};
  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<std::int32_t> registered_;
  int unregistrations_ = 0;
  int connections_ = 0;
  std::vector<QELPrivilegedToolOperationSet::CheckResult> cancellations_;
};

class FakeServiceConnection final : public host::ServiceConnection {
 public:
  explicit FakeServiceConnection(FakeService& service) : service_(service) { service_.noteConnection(); }

  Result<std::string> getVersionString() override { return "2.5"; }
  Result<Data> registerClientWithPID(std::int32_t pid) override { return service_.registerClient(pid); }
  ErrorOrNil unregisterClientWithPID(std::int32_t pid) override {
    service_.unregisterClient(pid);
    return std::nullopt;
  }
  Result<ErrorOrNil> performPrivilegedOperation(std::uint64_t code, DataView token, host::FeedbackListener* feedback,
                                                const Array& arguments) override {
    return service_.answer(
        {code, arguments, dynamic_cast<FakeFeedbackListener*>(feedback), service_.check(token, code, arguments)});
  }
  ErrorOrNil cancelPrivilegedOperation(std::uint64_t code, DataView token, const Array& arguments) override {
    service_.cancel(service_.check(token, code, arguments));
    return std::nullopt;
  }
  bool waitUntilClosed(std::chrono::milliseconds) override { return true; }

 private:
  FakeService& service_;
};

/// Leads every way to one service.
class FakeClientTransport final : public host::ClientTransport {
 public:
  explicit FakeClientTransport(FakeService& service) : service_(service) {}

  Result<std::unique_ptr<host::ServiceConnection>> connectToAddress(const std::string& address) override {
    lastAddress = address;
    return std::make_unique<FakeServiceConnection>(service_);
  }
  Result<std::unique_ptr<host::ServiceConnection>> connectToServiceOnBus(std::string_view serviceName) override {
    lastAddress = serviceName;
    return std::make_unique<FakeServiceConnection>(service_);
  }
  host::InstallationPlaces installationPlaces() const override { return places; }
  Result<std::unique_ptr<host::FeedbackListener>> makeFeedbackListener(
      std::function<void(const Dictionary&)> handler) override {
    return std::make_unique<FakeFeedbackListener>(std::move(handler));
  }
  Result<std::unique_ptr<host::SpawnedService>> spawnService(const std::string&) override {
    return posixFailure(posix::kNotSupported);
  }

  std::string lastAddress;
  host::InstallationPlaces places = {"/run/vantrell/privilegedtool.socket", "/usr/libexec"};

 private:
  FakeService& service_;
};

}  // namespace vantrell::tests
