// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <csignal>
#include <functional>
#include <stdexcept>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrell::tests {

enum class ChildEnd { Killed, Succeeded, Failed, NotTraceable };

/// Runs `work` in a child process that is killed, as with `kill -9`, when it enters or leaves system calls for the
/// `stop`th time (from 1): every two of them are one system call, so that the death lies before its effect or behind
/// it. The child succeeds when `work` is through with true before that.
inline ChildEnd runKilledAtSystemCall(int stop, const std::function<bool()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(2);
    raise(SIGSTOP);
    _exit(work() ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  if (!WIFSTOPPED(status)) return ChildEnd::NotTraceable;
  for (int calls = 0; calls < stop;) {
    if (ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) != 0) break;
    waitpid(child, &status, 0);
    if (WIFEXITED(status)) return WEXITSTATUS(status) == 0 ? ChildEnd::Succeeded : ChildEnd::Failed;
    if (WIFSTOPPED(status) && WSTOPSIG(status) == SIGTRAP) ++calls;
  }
  kill(child, SIGKILL);
  waitpid(child, &status, 0);
  return ChildEnd::Killed;
}

}  // namespace vantrell::tests
