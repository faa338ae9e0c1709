// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/SignalInterruptWatcher.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace vantrell::host {

namespace {

/// What nohup and a shell's background jobs ignore stays ignored. A blocked signal would be queued all the same.
bool isIgnored(int signal) {
  struct sigaction action {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

sigset_t watchedSignals() {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGTERM);
  for (const int signal : {SIGINT, SIGHUP}) {
    if (!isIgnored(signal)) sigaddset(&set, signal);
  }
  return set;
}

}  // namespace

std::unique_ptr<SignalInterruptWatcher> SignalInterruptWatcher::make(std::function<void()> handler) {
  const sigset_t watched = watchedSignals();
  FileDescriptor signals(signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK));
  FileDescriptor end(eventfd(0, EFD_CLOEXEC));
  if (!signals || !end) return nullptr;
  return std::unique_ptr<SignalInterruptWatcher>(
      new SignalInterruptWatcher(std::move(handler), std::move(signals), std::move(end), watched));
}

SignalInterruptWatcher::SignalInterruptWatcher(std::function<void()> handler, FileDescriptor signals,
                                               FileDescriptor end, const sigset_t& watched)
    : handler_(std::move(handler)), signals_(std::move(signals)), end_(std::move(end)) {
  pthread_sigmask(SIG_BLOCK, &watched, &previousMask_);
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &previousPipeAction_);
  thread_ = std::thread([this] { watch(); });
}

SignalInterruptWatcher::~SignalInterruptWatcher() {
  const std::uint64_t one = 1;
  // An event counter at zero takes eight bytes at once.
  [[maybe_unused]] const auto written = write(end_.get(), &one, sizeof one);
  thread_.join();
  sigaction(SIGPIPE, &previousPipeAction_, nullptr);
  pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
}

void SignalInterruptWatcher::watch() {
  std::array<pollfd, 2> waiting{{{signals_.get(), POLLIN, 0}, {end_.get(), POLLIN, 0}}};
  for (;;) {
    if (poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) return;
    if (waiting[1].revents != 0) return;
    signalfd_siginfo signal{};
    if (read(signals_.get(), &signal, sizeof signal) == static_cast<ssize_t>(sizeof signal)) handler_();
  }
}

std::unique_ptr<InterruptWatcher> makeInterruptWatcher(std::function<void()> handler) {
  return SignalInterruptWatcher::make(std::move(handler));
}

}  // namespace vantrell::host
