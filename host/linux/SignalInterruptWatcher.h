// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <csignal>
#include <functional>
#include <memory>
#include <thread>

#include "host/InterruptWatcher.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// Blocks the signals in the thread that makes it (and so in those started later) and reads them from a descriptor.
class SignalInterruptWatcher final : public InterruptWatcher {
 public:
  /// Null where the kernel has no descriptors left.
  static std::unique_ptr<SignalInterruptWatcher> make(std::function<void()> handler);

  SignalInterruptWatcher(const SignalInterruptWatcher&) = delete;
  SignalInterruptWatcher& operator=(const SignalInterruptWatcher&) = delete;
  ~SignalInterruptWatcher() override;

 private:
  SignalInterruptWatcher(std::function<void()> handler, FileDescriptor signals, FileDescriptor end,
                         const sigset_t& watched);
  void watch();

  std::function<void()> handler_;
  FileDescriptor signals_;
  FileDescriptor end_;
  sigset_t previousMask_{};
  struct sigaction previousPipeAction_ {};
  std::thread thread_;
};

}  // namespace vantrell::host
