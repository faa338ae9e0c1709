// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <csignal>
#include <cstring>

#include <spawn.h>
#include <unistd.h>

#include "host/posix/SpawnCalls.h"

namespace vantrell::host {

/// How a child starts: with three descriptors and no other, default signal handling and nothing blocked.
class SpawnSettings {
 public:
  /// The descriptors that become the child's standard streams; none of them is 0, 1 or 2.
  SpawnSettings(int input, int output, int error) noexcept {
    keep(posix_spawn_file_actions_init(&actions_));
    keep(posix_spawnattr_init(&attributes_));
    if (problem_ != 0) return;
    keep(posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO));
    keep(posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO));
    keep(posix_spawn_file_actions_adddup2(&actions_, error, STDERR_FILENO));
    // Everything is closed on exec by convention; a library may not keep to it.
    keep(closeOtherDescriptors(actions_, flags_));
    // Every bit: a C library's sigfillset may leave out those that it keeps to itself, and they would start ignored.
    sigset_t signals;
    std::memset(&signals, 0xFF, sizeof signals);
    keep(posix_spawnattr_setsigdefault(&attributes_, &signals));
    sigemptyset(&signals);
    keep(posix_spawnattr_setsigmask(&attributes_, &signals));
    addFlags(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawn_file_actions_destroy(&actions_);
    posix_spawnattr_destroy(&attributes_);
  }

  void addFlags(int flags) noexcept {
    flags_ = static_cast<short>(flags_ | flags);
    keep(posix_spawnattr_setflags(&attributes_, flags_));
  }

  /// An error number (there was no memory), or 0.
  int problem() const noexcept { return problem_; }
  const posix_spawn_file_actions_t* actions() const noexcept { return &actions_; }
  const posix_spawnattr_t* attributes() const noexcept { return &attributes_; }

 private:
  void keep(int problem) noexcept {
    if (problem_ == 0) problem_ = problem;
  }

  posix_spawn_file_actions_t actions_{};
  posix_spawnattr_t attributes_{};
  short flags_ = 0;
  int problem_ = 0;
};

}  // namespace vantrell::host
