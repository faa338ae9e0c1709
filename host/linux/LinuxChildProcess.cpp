// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxChildProcess.h"

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <system_error>
#include <thread>
#include <utility>

#include <sys/wait.h>
#include <unistd.h>

// glibc 2.36 left the language linkage out of this header.
extern "C" {
#include <sys/pidfd.h>
}

#include "host/linux/OutputRelay.h"

namespace vantrell::host {
namespace {

constexpr std::int32_t kUnknownStatus = -1;

/// Nothing while the child runs, which happens with WNOHANG only.
std::optional<std::int32_t> waitForStatus(int process, int options) {
  siginfo_t information{};
  int problem = 0;
  do {
    problem = waitid(P_PIDFD, static_cast<id_t>(process), &information, WEXITED | options);
  } while (problem != 0 && errno == EINTR);
  if (problem != 0) return kUnknownStatus;
  if (information.si_pid == 0) return std::nullopt;
  return information.si_status;  // the exit status or the number of the signal, as si_code tells
}

}  // namespace

LinuxChildProcess::LinuxChildProcess(pid_t identifier, FileDescriptor process,
                                     std::unique_ptr<LinuxChildPipes> pipes) noexcept
    : identifier_(identifier), process_(std::move(process)), pipes_(std::move(pipes)) {}

// Waiting for a child that runs on can take for ever, so a thread does it that nobody waits for.
LinuxChildProcess::~LinuxChildProcess() {
  if (waitedFor_ || waitForStatus(process_.get(), WNOHANG)) return;
  try {
    std::thread([process = std::move(process_)] { waitForStatus(process.get(), 0); }).detach();
  } catch (const std::system_error&) {
    // No more threads for this process: the child stays a zombie until this process ends.
  }
}

std::int32_t LinuxChildProcess::relayOutputUntilExit(const OutputHandler& outputHandler,
                                                     const ExitHandler& exitHandler) {
  OutputRelay relay(*pipes_, process_.get(), outputHandler);
  relay.relayUntilExit();
  const auto status = waitForStatus(process_.get(), 0).value_or(kUnknownStatus);
  waitedFor_ = true;
  if (exitHandler) exitHandler(status);
  relay.relayToEnd();
  return status;
}

void LinuxChildProcess::sendSignal(ChildSignal signal) {
  pidfd_send_signal(process_.get(), signal == ChildSignal::Interrupt ? SIGINT : SIGTERM, nullptr, 0);
  const std::uint64_t one = 1;
  // An event counter far from its limit takes eight bytes at once.
  [[maybe_unused]] const auto written = write(pipes_->interruption.get(), &one, sizeof one);
}

}  // namespace vantrell::host
