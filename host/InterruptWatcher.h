// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>

namespace vantrell::host {

/// While it exists, a request to end this process (on a Unix system the signals INT, TERM and HUP, but for INT and HUP
/// where they were ignored before) is handed to a function instead, and writing to a pipe that nobody reads is an error
/// of the write instead of the process's end.
class InterruptWatcher {
 public:
  virtual ~InterruptWatcher() = default;
};

/// `handler` is called once for each request, on a thread of the watcher's; it must not destroy the watcher. At most
/// one watcher exists at a time. It is made, and goes, on the same thread, and threads that were started before it was
/// made must have ended: the request could end the process through one of them. Null where the system has no means
/// left.
std::unique_ptr<InterruptWatcher> makeInterruptWatcher(std::function<void()> handler);

}  // namespace vantrell::host
