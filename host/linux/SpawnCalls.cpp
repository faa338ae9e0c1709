// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/SpawnCalls.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/posix/SpawnSettings.h"

namespace vantrell::host {
namespace {

// Four times the usual size: fewer switches between a child that writes much and the relay. What is larger than a
// processor's own cache gains nothing.
constexpr int kPipeSize = 256 << 10;

/// Keeps SIGPIPE from this process while the calling thread writes to a stream that may have no reader.
class PipeSignalGuard {
 public:
  PipeSignalGuard() noexcept {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    sigset_t pending;
    sigpending(&pending);
    wasPending_ = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  PipeSignalGuard(const PipeSignalGuard&) = delete;
  PipeSignalGuard& operator=(const PipeSignalGuard&) = delete;
  ~PipeSignalGuard() {
    const int error = errno;
    const timespec now{};
    if (!wasPending_) sigtimedwait(&pipe_, nullptr, &now);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    errno = error;
  }

 private:
  sigset_t pipe_;
  sigset_t before_;
  bool wasPending_;
};

}  // namespace

int makePipe(int (&ends)[2]) noexcept {
  return pipe2(ends, O_CLOEXEC) == 0 ? 0 : errno;
}

// Refused where a user has used up an allowance; the usual size serves as well.
void enlargePipe(int writingEnd) noexcept {
  static_cast<void>(fcntl(writingEnd, F_SETPIPE_SZ, kPipeSize));
}

int closeOtherDescriptors(posix_spawn_file_actions_t& actions, short&) noexcept {
  return posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
}

// The mask is the process's own unless a thread takes leave of it, which can't be undone: hence one that ends with this
// call. Nobody else sees the mask change.
int spawnWithMask(mode_t mask, const SpawnedProgram& program, SpawnSettings& settings, pid_t& child) {
  int result = 0;
  try {
    std::thread([&] {
      if (unshare(CLONE_FS) != 0) {
        result = errno;
        return;
      }
      umask(mask);
      result = posix_spawn(&child, program.path, settings.actions(), settings.attributes(), program.arguments,
                           program.environment);
    }).join();
  } catch (const std::system_error& error) {
    return error.code().value();
  }
  return result;
}

ssize_t writeWithoutSignal(int descriptor, const void* bytes, std::size_t count) noexcept {
  const PipeSignalGuard guard;
  return write(descriptor, bytes, count);
}

}  // namespace vantrell::host
