// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vantrell {

/// Opens after a number of arrivals (or when told to) and stays open. Waiting gives up after a while, so that a lost
/// wake-up fails a test instead of hanging it.
class Gate {
 public:
  explicit Gate(int arrivals = 1) : missing_(arrivals) {}

  void arrive() {
    const std::lock_guard lock(mutex_);
    if (missing_ > 0 && --missing_ == 0) opened_.notify_all();
  }
  void open() { arrive(); }

  [[nodiscard]] bool wait(std::chrono::milliseconds limit = std::chrono::seconds(30)) {
    std::unique_lock lock(mutex_);
    return opened_.wait_for(lock, limit, [this] { return missing_ == 0; });
  }

  /// Waits for all the others: nobody passes before all have come.
  [[nodiscard]] bool arriveAndWait() {
    arrive();
    return wait();
  }

 private:
  std::mutex mutex_;
  std::condition_variable opened_;
  int missing_;
};

}  // namespace vantrell
