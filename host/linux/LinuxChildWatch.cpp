// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxChildWatch.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

// glibc 2.36 left the language linkage out of this header.
extern "C" {
#include <sys/pidfd.h>
}

#include "host/posix/ErrorNumbers.h"
#include "host/posix/StandardDescriptors.h"

namespace vantrell::host {
namespace {

constexpr std::int32_t kUnknownStatus = -1;

}  // namespace

LinuxChildWatch::LinuxChildWatch(FileDescriptor interruption) noexcept : interruption_(std::move(interruption)) {}

int LinuxChildWatch::begin(pid_t child) noexcept {
  process_.reset(pidfd_open(child, 0));
  return process_ ? 0 : errno;
}

std::optional<ChildEvents> LinuxChildWatch::wait(const ChildEvents& wanted, int output, int error,
                                                 int milliseconds) noexcept {
  std::array<pollfd, 4> watched{{{wanted.output ? output : -1, POLLIN, 0},
                                 {wanted.error ? error : -1, POLLIN, 0},
                                 {wanted.exit ? process_.get() : -1, POLLIN, 0},
                                 {wanted.interruption ? interruption_.get() : -1, POLLIN, 0}}};
  const int ready = poll(watched.data(), watched.size(), milliseconds);
  if (ready == 0) return std::nullopt;
  if (ready < 0) return ChildEvents{};
  return ChildEvents{watched[0].revents != 0, watched[1].revents != 0, watched[2].revents != 0,
                     watched[3].revents != 0};
}

void LinuxChildWatch::interrupt() noexcept {
  const std::uint64_t one = 1;
  // An event counter far from its limit takes eight bytes at once.
  [[maybe_unused]] const auto written = write(interruption_.get(), &one, sizeof one);
}

void LinuxChildWatch::send(int signal) noexcept {
  pidfd_send_signal(process_.get(), signal, nullptr, 0);
}

std::optional<std::int32_t> LinuxChildWatch::takeStatus(Patience patience) noexcept {
  siginfo_t information{};
  int problem = 0;
  do {
    problem = waitid(P_PIDFD, static_cast<id_t>(process_.get()), &information,
                     WEXITED | (patience == Patience::None ? WNOHANG : 0));
  } while (problem != 0 && errno == EINTR);
  if (problem != 0) return kUnknownStatus;
  if (information.si_pid == 0) return std::nullopt;
  return information.si_status;  // the exit status or the number of the signal, as si_code tells
}

Result<std::unique_ptr<ChildWatch>> makeChildWatch() {
  FileDescriptor interruption(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!interruption) return errnoFailure();
  // As one of the standard descriptors, it would be raised by whoever writes to that.
  if (const int problem = leaveStandardDescriptors(interruption)) return errnoFailure(problem);
  return std::make_unique<LinuxChildWatch>(std::move(interruption));
}

}  // namespace vantrell::host
