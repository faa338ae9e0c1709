// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxChildProcesses.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

#include <poll.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// glibc 2.36 left the language linkage out of this header.
extern "C" {
#include <sys/pidfd.h>
}

#include "host/posix/ErrorNumbers.h"
#include "host/linux/LinuxChildPipes.h"
#include "host/linux/LinuxChildProcess.h"
#include "host/linux/SpawnSettings.h"

namespace vantrell::host {
namespace {

constexpr char kSearchPath[] = "PATH";

bool holdsZeroByte(const std::string& text) {
  return text.find('\0') != std::string::npos;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (auto& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

std::vector<std::string> environment() {
  std::vector<std::string> variables;
  for (char** variable = environ; variable && *variable; ++variable) variables.emplace_back(*variable);
  return variables;
}

// The mask is the process's own unless a thread takes leave of it, which can't be undone: hence one that ends with this
// call. Nobody else sees the mask change. Answers what `call` does, or an error number of its own.
template <class Call>
int callWithOwnMask(mode_t mask, const Call& call) {
  int result = 0;
  try {
    std::thread([&] {
      if (unshare(CLONE_FS) != 0) {
        result = errno;
        return;
      }
      umask(mask);
      result = call();
    }).join();
  } catch (const std::system_error& error) {
    return error.code().value();
  }
  return result;
}

// The child's own ends are closed by now, so another thread must have taken the last descriptors this very moment.
// Unwatched the child must not run on.
void endUnwatched(pid_t child) {
  kill(child, SIGKILL);
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
}

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
    const timespec now{};
    if (!wasPending_) sigtimedwait(&pipe_, nullptr, &now);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

 private:
  sigset_t pipe_;
  sigset_t before_;
  bool wasPending_;
};

}  // namespace

LinuxChildProcesses::LinuxChildProcesses() {
  struct sigaction action {};
  if (sigaction(SIGCHLD, nullptr, &action) != 0) return;
  if (action.sa_handler != SIG_IGN && (action.sa_flags & SA_NOCLDWAIT) == 0) return;
  if (action.sa_handler == SIG_IGN) action.sa_handler = SIG_DFL;
  action.sa_flags &= ~SA_NOCLDWAIT;
  sigaction(SIGCHLD, &action, nullptr);
}

Result<std::unique_ptr<ChildPipes>> LinuxChildProcesses::makePipes() {
  auto pipes = LinuxChildPipes::make();
  if (!pipes) return failure(pipes.error());
  return std::move(*pipes);
}

Result<std::unique_ptr<ChildProcess>> LinuxChildProcesses::launch(const std::string& path,
                                                                  const std::vector<std::string>& arguments,
                                                                  std::unique_ptr<ChildPipes> given) {
  if (!dynamic_cast<LinuxChildPipes*>(given.get())) return errnoFailure(EINVAL);
  std::unique_ptr<LinuxChildPipes> pipes(static_cast<LinuxChildPipes*>(given.release()));
  if (holdsZeroByte(path) || std::ranges::any_of(arguments, holdsZeroByte)) return errnoFailure(EINVAL);
  std::vector<std::string> words{path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  const SpawnSettings settings(pipes->input.reading.get(), pipes->output.writing.get(), pipes->error.writing.get());
  if (settings.problem() != 0) return errnoFailure(settings.problem());
  pid_t child = -1;
  const int problem = [&] {
    const std::shared_lock lock(mutex_);
    auto variables = environment();
    const auto spawn = [&] {
      return posix_spawn(&child, path.c_str(), settings.actions(), settings.attributes(), pointersTo(words).data(),
                         pointersTo(variables).data());
    };
    return openMasks_ == 0 ? spawn() : callWithOwnMask(formerMask_, spawn);
  }();
  if (problem != 0) return errnoFailure(problem);
  pipes->closeChildEnds();
  FileDescriptor process(pidfd_open(child, 0));
  if (!process) {
    const int reason = errno;
    endUnwatched(child);
    return errnoFailure(reason);
  }
  return std::make_unique<LinuxChildProcess>(child, std::move(process), std::move(pipes));
}

class LinuxChildProcesses::OpenMask final : public OpenFileCreationMask {
 public:
  explicit OpenMask(LinuxChildProcesses& owner) : owner_(owner) { owner_.openMask(); }
  OpenMask(const OpenMask&) = delete;
  OpenMask& operator=(const OpenMask&) = delete;
  ~OpenMask() override { owner_.restoreMask(); }

 private:
  LinuxChildProcesses& owner_;
};

std::unique_ptr<OpenFileCreationMask> LinuxChildProcesses::openFileCreationMask() {
  return std::make_unique<OpenMask>(*this);
}

void LinuxChildProcesses::openMask() {
  const std::lock_guard lock(mutex_);
  if (openMasks_++ == 0) formerMask_ = umask(0);
}

void LinuxChildProcesses::restoreMask() {
  const std::lock_guard lock(mutex_);
  if (--openMasks_ == 0) umask(formerMask_);
}

void LinuxChildProcesses::setSearchPath(const std::optional<std::string>& path) {
  const std::lock_guard lock(mutex_);
  if (path) {
    setenv(kSearchPath, path->c_str(), 1);
  } else {
    unsetenv(kSearchPath);
  }
}

std::optional<std::string> LinuxChildProcesses::searchPath() {
  const std::shared_lock lock(mutex_);
  const char* path = std::getenv(kSearchPath);
  return path ? std::optional<std::string>(path) : std::nullopt;
}

void LinuxChildProcesses::writeToOwnStream(ChildStream stream, DataView bytes) noexcept {
  const int descriptor = stream == ChildStream::Output ? STDOUT_FILENO : STDERR_FILENO;
  const PipeSignalGuard guard;
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count >= 0) {
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    } else if (errno == EAGAIN) {
      pollfd waiting{descriptor, POLLOUT, 0};
      poll(&waiting, 1, -1);
    } else if (errno != EINTR) {
      return;
    }
  }
}

}  // namespace vantrell::host
