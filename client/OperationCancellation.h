// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
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
  std::condition_variable changed_;
  bool requested_ = false;
};

/// While it exists, calls `send` on a thread of its own once the cancellation is requested, and again at growing
/// intervals: a cancellation that overtakes the request it is meant for does nothing at the service.
class CancellationSender {
 public:
  CancellationSender(OperationCancellation& cancellation, std::function<void()> send);
  CancellationSender(const CancellationSender&) = delete;
  CancellationSender& operator=(const CancellationSender&) = delete;
  /// Waits for a `send` that is under way.
  ~CancellationSender();

 private:
  void run();

  OperationCancellation& cancellation_;
  std::function<void()> send_;
  bool isEnding_ = false;  // under the cancellation's lock
  std::thread thread_;
};

}  // namespace vantrell
