// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <utility>

namespace vantrell::host {

/// Between the platform's threads, which call when they like, and an object that ends: what is inside is waited for,
/// and once the gate is closed nothing comes in. Safe from any thread.
class CallGate {
 public:
  /// One call on its way through; an empty one was not let in.
  class Pass {
   public:
    explicit Pass(CallGate* gate) noexcept : gate_(gate) {}
    Pass(Pass&& other) noexcept : gate_(std::exchange(other.gate_, nullptr)) {}
    Pass& operator=(Pass&&) = delete;
    ~Pass() {
      if (gate_) gate_->leave();
    }
    explicit operator bool() const noexcept { return gate_ != nullptr; }

   private:
    CallGate* gate_;
  };

  [[nodiscard]] Pass enter() {
    const std::lock_guard lock(mutex_);
    if (closed_) return Pass(nullptr);
    ++inside_;
    return Pass(this);
  }

  void close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }

  bool isClosed() const {
    const std::lock_guard lock(mutex_);
    return closed_;
  }

  /// Not from inside.
  void waitUntilEmpty() {
    std::unique_lock lock(mutex_);
    left_.wait(lock, [this] { return inside_ == 0; });
  }

 private:
  void leave() noexcept {
    const std::lock_guard lock(mutex_);
    // Told under the lock: whoever waits may take the gate away as soon as it is free.
    if (--inside_ == 0) left_.notify_all();
  }

  mutable std::mutex mutex_;
  std::condition_variable left_;
  std::size_t inside_ = 0;
  bool closed_ = false;
};

}  // namespace vantrell::host
