// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <mutex>

#include "host/posix/ChildWatch.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// One kernel queue for everything that the relay waits for. The child is known by its identifier, which is its own
/// until it has been waited for: signals and waiting shut each other out.
class MacChildWatch final : public ChildWatch {
 public:
  /// `queue` is a kernel queue whose user event is the interruption.
  explicit MacChildWatch(FileDescriptor queue) noexcept;

  /// Gives `queue` what it needs to be one. An error number, or 0.
  static int prepare(int queue) noexcept;

  int begin(pid_t child) noexcept override;
  std::optional<ChildEvents> wait(const ChildEvents& wanted, int output, int error, int milliseconds) noexcept override;
  void interrupt() noexcept override;
  void send(int signal) noexcept override;
  std::optional<std::int32_t> takeStatus(Patience patience) noexcept override;
  void keepStatusOnly() noexcept override { queue_.reset(); }

 private:
  FileDescriptor queue_;
  // The queue reports both of these once; they stay true.
  bool hasExited_ = false;
  std::atomic<bool> isInterrupted_ = false;

  std::mutex mutex_;  // over the two below, and over waiting and signals
  pid_t child_ = -1;
  bool isWaitedFor_ = false;
};

}  // namespace vantrell::host
