// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>

#include <spawn.h>
#include <sys/types.h>

namespace vantrell::host {

class SpawnSettings;

/// What concerns child programs and is another call, or several, on each kernel. Numbers returned are error numbers, 0
/// for success.

/// A pipe whose ends are closed on exec; the first is the one to read from.
int makePipe(int (&ends)[2]) noexcept;

/// Makes a pipe that takes much output larger, where that can be had.
void enlargePipe(int writingEnd) noexcept;

/// Leaves a child nothing open but its standard streams, which `actions` have put in place. May add to the `flags` that
/// the attributes are going to get.
int closeOtherDescriptors(posix_spawn_file_actions_t& actions, short& flags) noexcept;

struct SpawnedProgram {
  const char* path;
  char* const* arguments;
  char* const* environment;
};

/// posix_spawn, with a file-creation mask for the child that this process itself doesn't have, not for a moment.
int spawnWithMask(mode_t mask, const SpawnedProgram& program, SpawnSettings& settings, pid_t& child);

/// write(2) to what may be a pipe without a reader: then EPIPE, and no signal.
ssize_t writeWithoutSignal(int descriptor, const void* bytes, std::size_t count) noexcept;

}  // namespace vantrell::host
