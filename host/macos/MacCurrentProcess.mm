// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacCurrentProcess.h"

#include <CoreFoundation/CoreFoundation.h>
#include <pthread.h>

namespace vantrell::host {

// Not dispatch_main: it ends the main thread and wipes its stack, and with it what the program's entry keeps there.
void MacCurrentProcess::runMainLoop() {
  constexpr CFTimeInterval kVeryLong = 1.0e10;
  if (pthread_main_np() != 0) {
    while (CFRunLoopRunInMode(kCFRunLoopDefaultMode, kVeryLong, false) != kCFRunLoopRunFinished) continue;
  }
  // Another thread's loop, and one that has nothing to wait for, would be over at once.
  PosixCurrentProcess::runMainLoop();
}

}  // namespace vantrell::host
