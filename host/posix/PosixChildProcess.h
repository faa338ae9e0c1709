// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include <sys/types.h>

#include "host/ChildProcesses.h"
#include "host/posix/PosixChildPipes.h"

namespace vantrell::host {

class PosixChildProcess final : public ChildProcess {
 public:
  /// The pipes' watch has begun, with the child `identifier`, which only this object may wait for.
  PosixChildProcess(pid_t identifier, std::unique_ptr<PosixChildPipes> pipes) noexcept;
  PosixChildProcess(const PosixChildProcess&) = delete;
  PosixChildProcess& operator=(const PosixChildProcess&) = delete;
  ~PosixChildProcess() override;

  std::int32_t relayOutputUntilExit(const OutputHandler& outputHandler, const ExitHandler& exitHandler) override;
  void sendSignal(ChildSignal signal) override;
  std::int32_t identifier() const noexcept override { return identifier_; }

 private:
  pid_t identifier_;
  std::unique_ptr<PosixChildPipes> pipes_;
  bool waitedFor_ = false;
};

}  // namespace vantrell::host
