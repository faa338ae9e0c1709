// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <csignal>
#include <functional>
#include <memory>
#include <thread>

#include "host/InterruptWatcher.h"

namespace vantrell::host {

/// Blocks the signals in the thread that makes it (and so in those started later) and waits for them in one of its own.
class SignalInterruptWatcher final : public InterruptWatcher {
 public:
  /// Null where there are no threads left.
  static std::unique_ptr<SignalInterruptWatcher> make(std::function<void()> handler);

  SignalInterruptWatcher(const SignalInterruptWatcher&) = delete;
  SignalInterruptWatcher& operator=(const SignalInterruptWatcher&) = delete;
  ~SignalInterruptWatcher() override;

 private:
  explicit SignalInterruptWatcher(std::function<void()> handler);
  void watch();
  void putBack() noexcept;

  std::function<void()> handler_;
  sigset_t watched_{};
  sigset_t previousMask_{};
  struct sigaction previousPipeAction_ {};
  struct sigaction previousTerminationAction_ {};
  std::atomic<bool> isOver_ = false;
  std::thread thread_;
};

}  // namespace vantrell::host
