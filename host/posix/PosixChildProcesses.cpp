// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixChildProcesses.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <utility>

#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/posix/ErrorNumbers.h"
#include "host/posix/PosixChildPipes.h"
#include "host/posix/PosixChildProcess.h"
#include "host/posix/SpawnSettings.h"

extern "C" char** environ;  // not every system's headers have it

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

// The child's own ends are closed by now, so another thread must have taken the last descriptors this very moment.
// Unwatched the child must not run on.
void endUnwatched(pid_t child) {
  kill(child, SIGKILL);
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) continue;
}

}  // namespace

PosixChildProcesses::PosixChildProcesses() {
  struct sigaction action {};
  if (sigaction(SIGCHLD, nullptr, &action) != 0) return;
  if (action.sa_handler != SIG_IGN && (action.sa_flags & SA_NOCLDWAIT) == 0) return;
  if (action.sa_handler == SIG_IGN) action.sa_handler = SIG_DFL;
  action.sa_flags &= ~SA_NOCLDWAIT;
  sigaction(SIGCHLD, &action, nullptr);
}

Result<std::unique_ptr<ChildPipes>> PosixChildProcesses::makePipes() {
  auto pipes = PosixChildPipes::make();
  if (!pipes) return failure(pipes.error());
  return std::move(*pipes);
}

Result<std::unique_ptr<ChildProcess>> PosixChildProcesses::launch(const std::string& path,
                                                                  const std::vector<std::string>& arguments,
                                                                  std::unique_ptr<ChildPipes> given) {
  if (!dynamic_cast<PosixChildPipes*>(given.get())) return errnoFailure(EINVAL);
  std::unique_ptr<PosixChildPipes> pipes(static_cast<PosixChildPipes*>(given.release()));
  if (holdsZeroByte(path) || std::ranges::any_of(arguments, holdsZeroByte)) return errnoFailure(EINVAL);
  std::vector<std::string> words{path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  SpawnSettings settings(pipes->input.reading.get(), pipes->output.writing.get(), pipes->error.writing.get());
  if (settings.problem() != 0) return errnoFailure(settings.problem());
  pid_t child = -1;
  if (const int problem = spawn(words, settings, child)) return errnoFailure(problem);
  pipes->closeChildEnds();
  if (const int problem = pipes->watch->begin(child)) {
    endUnwatched(child);
    return errnoFailure(problem);
  }
  return std::make_unique<PosixChildProcess>(child, std::move(pipes));
}

int PosixChildProcesses::spawn(std::vector<std::string>& words, SpawnSettings& settings, pid_t& child) {
  const std::shared_lock lock(mutex_);
  auto variables = environment();
  const auto arguments = pointersTo(words);
  const auto environmentOfChild = pointersTo(variables);
  const SpawnedProgram program{words.front().c_str(), arguments.data(), environmentOfChild.data()};
  if (openMasks_ != 0) return spawnWithMask(formerMask_, program, settings, child);
  return posix_spawn(&child, program.path, settings.actions(), settings.attributes(), program.arguments,
                     program.environment);
}

class PosixChildProcesses::OpenMask final : public OpenFileCreationMask {
 public:
  explicit OpenMask(PosixChildProcesses& owner) : owner_(owner) { owner_.openMask(); }
  OpenMask(const OpenMask&) = delete;
  OpenMask& operator=(const OpenMask&) = delete;
  ~OpenMask() override { owner_.restoreMask(); }

 private:
  PosixChildProcesses& owner_;
};

std::unique_ptr<OpenFileCreationMask> PosixChildProcesses::openFileCreationMask() {
  return std::make_unique<OpenMask>(*this);
}

void PosixChildProcesses::openMask() {
  const std::lock_guard lock(mutex_);
  if (openMasks_++ == 0) formerMask_ = umask(0);
}

void PosixChildProcesses::restoreMask() {
  const std::lock_guard lock(mutex_);
  if (--openMasks_ == 0) umask(formerMask_);
}

void PosixChildProcesses::setSearchPath(const std::optional<std::string>& path) {
  const std::lock_guard lock(mutex_);
  if (path) {
    setenv(kSearchPath, path->c_str(), 1);
  } else {
    unsetenv(kSearchPath);
  }
}

std::optional<std::string> PosixChildProcesses::searchPath() {
  const std::shared_lock lock(mutex_);
  const char* path = std::getenv(kSearchPath);
  return path ? std::optional<std::string>(path) : std::nullopt;
}

void PosixChildProcesses::writeToOwnStream(ChildStream stream, DataView bytes) noexcept {
  const int descriptor = stream == ChildStream::Output ? STDOUT_FILENO : STDERR_FILENO;
  while (!bytes.empty()) {
    const ssize_t count = writeWithoutSignal(descriptor, bytes.data(), bytes.size());
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
