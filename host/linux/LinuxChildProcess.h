// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <memory>
#include <optional>

#include <sys/types.h>

#include "host/ChildProcesses.h"
#include "host/posix/FileDescriptor.h"
#include "host/linux/LinuxChildPipes.h"

namespace vantrell::host {

/// A child known by a descriptor of the process itself, so that a recycled identifier is never mistaken for it.
class LinuxChildProcess final : public ChildProcess {
 public:
  /// `process` is the descriptor of the child `identifier`, which only this object may wait for.
  LinuxChildProcess(pid_t identifier, FileDescriptor process, std::unique_ptr<LinuxChildPipes> pipes) noexcept;
  LinuxChildProcess(const LinuxChildProcess&) = delete;
  LinuxChildProcess& operator=(const LinuxChildProcess&) = delete;
  ~LinuxChildProcess() override;

  std::int32_t relayOutputUntilExit(const OutputHandler& outputHandler, const ExitHandler& exitHandler) override;
  void sendSignal(ChildSignal signal) override;
  std::int32_t identifier() const noexcept override { return identifier_; }

 private:
  pid_t identifier_;
  FileDescriptor process_;
  std::unique_ptr<LinuxChildPipes> pipes_;
  bool waitedFor_ = false;
};

}  // namespace vantrell::host
