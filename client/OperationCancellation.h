// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

namespace vantrell {

/// The wish to cancel one operation; it stays once it is uttered. Safe from any thread.
class OperationCancellation {
 public:
  void request();
  bool isRequested() const;

 private:
  friend class CancellationSender;
  mutable std::mutex lock_;
  std::condition_variable_any changed_;
  bool requested_ = false;
};

/// While it exists, calls `send` on a thread of its own once the cancellation is requested, and again at growing
/// intervals: a cancellation that overtakes the request it is meant for does nothing at the service.
class CancellationSender {
 public:
  CancellationSender(OperationCancellation& cancellation, std::function<void()> send);
  /// Waits for a `send` that is under way.
  ~CancellationSender() = default;

 private:
  void run(const std::stop_token& stop);

  OperationCancellation& cancellation_;
  std::function<void()> send_;
  std::jthread thread_;
};

}  // namespace vantrell
