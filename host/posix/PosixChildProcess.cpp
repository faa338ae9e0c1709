// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixChildProcess.h"

#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

#include "host/posix/OutputRelay.h"

namespace vantrell::host {
namespace {

using Patience = ChildWatch::Patience;

constexpr std::int32_t kUnknownStatus = -1;

}  // namespace

PosixChildProcess::PosixChildProcess(pid_t identifier, std::unique_ptr<PosixChildPipes> pipes) noexcept
    : identifier_(identifier), pipes_(std::move(pipes)) {}

// Waiting for a child that runs on can take for ever, so a thread does it that nobody waits for.
PosixChildProcess::~PosixChildProcess() {
  if (waitedFor_ || pipes_->watch->takeStatus(Patience::None)) return;
  pipes_->watch->keepStatusOnly();
  try {
    std::thread([watch = std::move(pipes_->watch)] { watch->takeStatus(Patience::UntilExit); }).detach();
  } catch (const std::system_error&) {
    // No more threads for this process: the child stays a zombie until this process ends.
  }
}

std::int32_t PosixChildProcess::relayOutputUntilExit(const OutputHandler& outputHandler,
                                                     const ExitHandler& exitHandler) {
  OutputRelay relay(*pipes_, outputHandler);
  relay.relayUntilExit();
  const auto status = pipes_->watch->takeStatus(Patience::UntilExit).value_or(kUnknownStatus);
  waitedFor_ = true;
  if (exitHandler) exitHandler(status);
  relay.relayToEnd();
  return status;
}

void PosixChildProcess::sendSignal(ChildSignal signal) {
  pipes_->watch->send(signal == ChildSignal::Interrupt ? SIGINT : SIGTERM);
  pipes_->watch->interrupt();
}

}  // namespace vantrell::host
