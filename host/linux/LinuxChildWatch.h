// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/posix/ChildWatch.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// A child known by a descriptor of the process itself, so that a recycled identifier is never mistaken for it.
class LinuxChildWatch final : public ChildWatch {
 public:
  /// `interruption` is an event counter.
  explicit LinuxChildWatch(FileDescriptor interruption) noexcept;

  int begin(pid_t child) noexcept override;
  std::optional<ChildEvents> wait(const ChildEvents& wanted, int output, int error, int milliseconds) noexcept override;
  void interrupt() noexcept override;
  void send(int signal) noexcept override;
  std::optional<std::int32_t> takeStatus(Patience patience) noexcept override;
  void keepStatusOnly() noexcept override { interruption_.reset(); }

 private:
  FileDescriptor process_;
  FileDescriptor interruption_;
};

}  // namespace vantrell::host
