// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#import <Foundation/Foundation.h>

#include "host/ClientTransport.h"
#include "host/macos/ToolProtocols.h"

namespace vantrell::host {

/// Whether a connection still stands, and where its callers wait. It outlives the connection where the platform's
/// threads still call. Safe from any thread.
class ConnectionWatch {
 public:
  void noteEnd() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
  }
  bool hasEnded() const {
    const std::lock_guard lock(mutex_);
    return ended_;
  }
  bool waitForEnd(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [this] { return ended_; });
  }

  /// What one call waits for.
  template <class T>
  using Outcome = std::optional<Result<T>>;

  /// Only the first counts.
  template <class T>
  void settle(Outcome<T>& outcome, Result<T> result) {
    const std::lock_guard lock(mutex_);
    if (outcome) return;
    outcome.emplace(std::move(result));
    changed_.notify_all();
  }

  /// Waits for the outcome: POSIX error 54 where the connection ends without one, 60 where `limit` passes.
  template <class T>
  Result<T> wait(Outcome<T>& outcome, std::optional<std::chrono::milliseconds> limit = std::nullopt);

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
};

/// A client's connection to the service. Each request waits for its own reply or failure, which the platform delivers
/// on the connection's queue. For Objective-C++ sources only.
///
/// A connection by name would start the service anew with the next message after an interruption, and the new one knows
/// nobody: an interrupted connection has ended, and its calls fail with POSIX error 57.
class MacServiceConnection final : public ServiceConnection {
 public:
  /// Takes a connection that was not resumed, and asks the service for its version.
  static Result<std::unique_ptr<ServiceConnection>> open(NSXPCConnection* connection);

  explicit MacServiceConnection(NSXPCConnection* connection);
  ~MacServiceConnection() override;

  Result<std::string> getVersionString() override;
  Result<Data> registerClientWithPID(std::int32_t pid) override;
  ErrorOrNil unregisterClientWithPID(std::int32_t pid) override;
  Result<ErrorOrNil> performPrivilegedOperation(std::uint64_t code, DataView token, FeedbackListener* feedback,
                                                const Array& arguments) override;
  ErrorOrNil cancelPrivilegedOperation(std::uint64_t code, DataView token, const Array& arguments) override;
  bool waitUntilClosed(std::chrono::milliseconds limit) override { return watch_->waitForEnd(limit); }

 private:
  using Proxy = id<QELPrivilegedToolProtocol>;
  using Limit = std::optional<std::chrono::milliseconds>;

  /// Sends with `send(proxy, answer)` and waits for what `answer(Result<T>)` gets.
  template <class T, class Send>
  Result<T> request(Send send, Limit limit = std::nullopt);
  template <class Send>
  ErrorOrNil sendOneWay(Send send);
  Result<std::string> askVersion(Limit limit);

  NSXPCConnection* const connection_;
  const std::shared_ptr<ConnectionWatch> watch_ = std::make_shared<ConnectionWatch>();
  bool hadAnswer_ = false;  // set before others know the connection
};

}  // namespace vantrell::host
