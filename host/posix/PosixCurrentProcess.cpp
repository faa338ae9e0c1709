// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixCurrentProcess.h"

#include <chrono>
#include <cstdlib>
#include <thread>

#include <unistd.h>

namespace vantrell::host {

std::int32_t PosixCurrentProcess::identifier() const noexcept {
  return getpid();
}
std::uint32_t PosixCurrentProcess::realUserID() const noexcept {
  return getuid();
}
std::uint32_t PosixCurrentProcess::effectiveUserID() const noexcept {
  return geteuid();
}

// Worker threads may be anywhere at this moment; destructors of objects that they use must not run beside them.
void PosixCurrentProcess::exit(int status) {
  std::_Exit(status);
}

// Every listener, connection and operation has threads of its own; nothing is left for the main thread to do.
void PosixCurrentProcess::runMainLoop() {
  for (;;) pause();
}

void PosixCurrentProcess::sleepForMilliseconds(unsigned milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

}  // namespace vantrell::host
