// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/SpawnedHelper.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <linux/close_range.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

// glibc 2.36 left the language linkage out of this header.
extern "C" {
#include <sys/pidfd.h>
}

#include "host/linux/UnixAddress.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

namespace {

constexpr int kPassedDescriptor = 3;
constexpr std::chrono::milliseconds kEndLimit{1000};
constexpr std::string_view kPidVariable = "LISTEN_PID=";

/// The environment and arguments of the child, made before the fork: after it, in a process that may have other
/// threads, no memory can be had.
class ChildImage {
 public:
  explicit ChildImage(const std::string& path) : path_(path) {
    for (char** variable = environ; variable && *variable; ++variable) {
      if (!std::string_view(*variable).starts_with("LISTEN_")) variables_.emplace_back(*variable);
    }
    variables_.emplace_back("LISTEN_FDS=1");
    variables_.emplace_back(std::string(kPidVariable) + std::string(11, '\0'));
    for (std::string& variable : variables_) environment_.push_back(variable.data());
    environment_.push_back(nullptr);
  }

  /// In the child.
  [[noreturn]] void execute(int listening, int report) noexcept {
    becomeSession();
    passDescriptor(listening, report);
    writePid();
    char* arguments[] = {path_.data(), nullptr};
    execve(path_.c_str(), arguments, environment_.data());
    const int problem = errno;
    static_cast<void>(!write(report_, &problem, sizeof problem));
    _exit(127);
  }

 private:
  static void becomeSession() noexcept {
    setsid();
    for (int number = 1; number < NSIG; ++number) std::signal(number, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
  }

  // Descriptors 0 and 3 are arranged; everything from 4 on is closed by the execution at the latest.
  void passDescriptor(int listening, int report) noexcept {
    report_ = fcntl(report, F_DUPFD_CLOEXEC, kPassedDescriptor + 1);
    if (listening == kPassedDescriptor) {
      fcntl(listening, F_SETFD, 0);
    } else {
      dup2(listening, kPassedDescriptor);
    }
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing > 0) dup2(nothing, STDIN_FILENO);
    close_range(kPassedDescriptor + 1, ~0U, CLOSE_RANGE_CLOEXEC);
  }

  void writePid() noexcept {
    std::array<char, 11> digits{};
    std::size_t count = 0;
    for (pid_t rest = getpid(); rest > 0; rest /= 10) digits[count++] = static_cast<char>('0' + rest % 10);
    std::reverse_copy(digits.begin(), digits.begin() + count, variables_.back().begin() + kPidVariable.size());
  }

  std::string path_;
  std::vector<std::string> variables_;
  std::vector<char*> environment_;
  int report_ = -1;
};

/// Only this user or root may change what lies there, so that nobody else can put a socket in the place of ours.
bool isOwnFolder(const char* path) noexcept {
  struct stat status {};
  return path && *path == '/' && stat(path, &status) == 0 && S_ISDIR(status.st_mode) &&
         (status.st_uid == geteuid() || status.st_uid == 0) && (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

}  // namespace

Result<std::unique_ptr<SpawnedService>> SpawnedHelper::start(const std::string& executablePath) {
  auto helper = std::make_unique<SpawnedHelper>();
  if (const ErrorOrNil problem = helper->makeFolder()) return failure(*problem);
  helper->socketPath_ = helper->folder_ + "/socket";
  helper->address_ = unixAddressOfPath(helper->socketPath_);
  Result<FileDescriptor> listening = listenOnSocket(helper->socketPath_);
  if (!listening) return failure(listening.error());
  helper->listening_ = *std::move(listening);
  if (const ErrorOrNil problem = helper->startHelper(executablePath)) return failure(*problem);
  return helper;
}

// The system's own folder for temporary files is everyone's, but its sticky bit keeps entries their owners'.
ErrorOrNil SpawnedHelper::makeFolder() {
  constexpr std::size_t kLongestParent = 64;  // a socket's path has 107 bytes
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  const bool usesRuntime = isOwnFolder(runtime) && std::string_view(runtime).size() <= kLongestParent;
  std::string pattern = (usesRuntime ? std::string(runtime) : std::string("/tmp")) + "/Vantrell-PrivilegedTool.XXXXXX";
  if (!mkdtemp(pattern.data())) return errorFromErrno();
  folder_ = std::move(pattern);
  return std::nullopt;
}

ErrorOrNil SpawnedHelper::startHelper(const std::string& executablePath) {
  int ends[2] = {-1, -1};
  if (pipe2(ends, O_CLOEXEC) != 0) return errorFromErrno();
  const FileDescriptor reading(ends[0]);
  FileDescriptor writing(ends[1]);
  ChildImage image(executablePath);
  // No signal handler of this process may run in the child.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  pid_ = fork();
  if (pid_ == 0) image.execute(listening_.get(), writing.get());
  const int problem = pid_ < 0 ? errno : 0;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  if (problem != 0) return errorFromErrno(problem);
  listening_.reset();  // the socket is the helper's: when it ends, connecting fails
  process_.reset(pidfd_open(pid_, 0));
  if (!process_) return errorFromErrno();
  writing.reset();
  // The pipe closes by itself when the helper is being executed.
  int reported = 0;
  ssize_t count = 0;
  do {
    count = read(reading.get(), &reported, sizeof reported);
  } while (count < 0 && errno == EINTR);
  return count == sizeof reported ? ErrorOrNil(errorFromErrno(reported)) : std::nullopt;
}

std::optional<int> SpawnedHelper::waitForExit(std::chrono::milliseconds limit) {
  const std::lock_guard lock(mutex_);
  if (status_) return status_;
  pollfd watched{process_.get(), POLLIN, 0};
  const auto until = std::chrono::steady_clock::now() + limit;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    const int ready = poll(&watched, 1, static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, INT32_MAX)));
    if (ready > 0) break;
    if (ready == 0 && left.count() <= INT32_MAX) return std::nullopt;
    if (ready < 0 && errno != EINTR) return std::nullopt;
  }
  int status = 0;
  if (waitpid(pid_, &status, 0) != pid_) return std::nullopt;
  status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
  return status_;
}

void SpawnedHelper::signal(int number) noexcept {
  if (process_) {
    pidfd_send_signal(process_.get(), number, nullptr, 0);
  } else if (pid_ > 0) {
    kill(pid_, number);
  }
}

SpawnedHelper::~SpawnedHelper() {
  if (pid_ > 0 && !status_) {
    signal(SIGTERM);
    if (!process_ || !waitForExit(kEndLimit)) {
      signal(SIGKILL);
      if (process_) {
        waitForExit(std::chrono::hours(1));
      } else {
        waitpid(pid_, nullptr, 0);
      }
    }
  }
  if (!socketPath_.empty()) unlink(socketPath_.c_str());
  if (!folder_.empty()) rmdir(folder_.c_str());
}

}  // namespace vantrell::host
