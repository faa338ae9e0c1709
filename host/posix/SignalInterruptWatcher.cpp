// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/SignalInterruptWatcher.h"

#include <system_error>
#include <utility>

#include <pthread.h>

namespace vantrell::host {

namespace {

/// What nohup and a shell's background jobs ignore stays ignored. A blocked signal would be kept all the same.
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
  try {
    return std::unique_ptr<SignalInterruptWatcher>(new SignalInterruptWatcher(std::move(handler)));
  } catch (const std::system_error&) {
    return nullptr;
  }
}

SignalInterruptWatcher::SignalInterruptWatcher(std::function<void()> handler)
    : handler_(std::move(handler)), watched_(watchedSignals()) {
  pthread_sigmask(SIG_BLOCK, &watched_, &previousMask_);
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &previousPipeAction_);
  // Some kernels drop a signal that is ignored even where it is waited for.
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  sigaction(SIGTERM, &standard, &previousTerminationAction_);
  try {
    thread_ = std::thread([this] { watch(); });
  } catch (...) {
    putBack();
    throw;
  }
}

SignalInterruptWatcher::~SignalInterruptWatcher() {
  isOver_ = true;
  pthread_kill(thread_.native_handle(), SIGTERM);
  thread_.join();
  putBack();
}

void SignalInterruptWatcher::watch() {
  for (;;) {
    int signal = 0;
    if (sigwait(&watched_, &signal) != 0) continue;
    if (isOver_) return;
    handler_();
  }
}

void SignalInterruptWatcher::putBack() noexcept {
  sigaction(SIGTERM, &previousTerminationAction_, nullptr);
  sigaction(SIGPIPE, &previousPipeAction_, nullptr);
  pthread_sigmask(SIG_SETMASK, &previousMask_, nullptr);
}

std::unique_ptr<InterruptWatcher> makeInterruptWatcher(std::function<void()> handler) {
  return SignalInterruptWatcher::make(std::move(handler));
}

}  // namespace vantrell::host
