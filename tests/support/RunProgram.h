// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cerrno>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantrell::tests {

struct ProgramResult {
  int status = -1;  // 128 + signal number where a signal ended it
  std::string output;
  std::string error;
};

namespace detail {

inline std::string readAll(int descriptor) {
  std::string text;
  std::array<char, 4096> buffer;
  for (;;) {
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(descriptor);
  return text;
}

}  // namespace detail

/// Runs a program to its end, as `user`. The program is opened first, so that a user who may not enter its folder can
/// run it all the same.
inline ProgramResult runProgram(const std::string& path, const std::vector<std::string>& arguments,
                                uid_t user = geteuid()) {
  int output[2];
  int error[2];
  const int program = open(path.c_str(), O_RDONLY);
  if (program < 0 || pipe2(output, O_CLOEXEC) != 0 || pipe2(error, O_CLOEXEC) != 0) {
    ADD_FAILURE() << path << " can't be run (error " << errno << ")";
    return {};
  }
  std::vector<char*> words{const_cast<char*>(path.c_str())};
  for (const auto& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);

  const pid_t child = fork();
  if (child == 0) {
    dup2(output[1], STDOUT_FILENO);
    dup2(error[1], STDERR_FILENO);
    if (user != geteuid() && (setgid(user) != 0 || setuid(user) != 0)) _exit(126);
    fexecve(program, words.data(), environ);
    _exit(127);
  }
  close(program);
  close(output[1]);
  close(error[1]);
  ProgramResult result;
  std::thread errorReader([&] { result.error = detail::readAll(error[0]); });
  result.output = detail::readAll(output[0]);
  errorReader.join();
  int status = 0;
  waitpid(child, &status, 0);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

}  // namespace vantrell::tests
