// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <optional>

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/ProcessTable.h"

namespace vantrell::tests {

/// A process that does nothing until the end of the scope.
class IdleProcess {
 public:
  /// The process runs `prepare` before this returns.
  explicit IdleProcess(const std::function<void()>& prepare = [] {}) {
    int ready[2];
    if (pipe(ready) != 0) std::abort();
    identifier_ = fork();
    if (identifier_ == 0) {
      prepare();
      close(ready[1]);
      for (;;) pause();
    }
    close(ready[1]);
    char nothing = 0;
    while (read(ready[0], &nothing, 1) > 0) continue;
    close(ready[0]);
  }
  IdleProcess(const IdleProcess&) = delete;
  IdleProcess& operator=(const IdleProcess&) = delete;
  ~IdleProcess() { end(); }

  void kill() const { ::kill(identifier_, SIGKILL); }
  void end() {
    if (identifier_ <= 0) return;
    kill();
    waitpid(identifier_, nullptr, 0);
    identifier_ = -1;
  }
  pid_t identifier() const { return identifier_; }

 private:
  pid_t identifier_;
};

/// The process's record among all of the table's.
inline std::optional<host::ProcessRecord> entryIn(host::ProcessTable& table, pid_t identifier) {
  const auto records = table.processes();
  if (!records) return std::nullopt;
  const auto found = std::ranges::find(*records, identifier, &host::ProcessRecord::identifier);
  return found == records->end() ? std::nullopt : std::optional(*found);
}

}  // namespace vantrell::tests
