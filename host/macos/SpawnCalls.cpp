// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/SpawnCalls.h"

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/posix/SpawnSettings.h"
#include "host/posix/StandardDescriptors.h"

namespace vantrell::host {
namespace {

// Beside other threads a forked child may do no more than call the kernel. What becomes of it is posix_spawn's affair
// again: with this flag it turns the process into the program.
[[noreturn]] void becomeProgram(mode_t mask, const SpawnedProgram& program, const SpawnSettings& settings, int report) {
  umask(mask);
  const int problem = posix_spawn(nullptr, program.path, settings.actions(), settings.attributes(), program.arguments,
                                  program.environment);
  write(report, &problem, sizeof problem);
  _exit(127);
}

/// Nothing comes from a child that has become the program.
int problemReportedTo(int report) noexcept {
  int problem = 0;
  ssize_t count = 0;
  do {
    count = read(report, &problem, sizeof problem);
  } while (count < 0 && errno == EINTR);
  return count == static_cast<ssize_t>(sizeof problem) ? problem : 0;
}

}  // namespace

// There is a moment before the second call. Children that are spawned in it get nothing but their streams all the same.
int makePipe(int (&ends)[2]) noexcept {
  if (pipe(ends) != 0) return errno;
  for (const int end : ends) {
    if (fcntl(end, F_SETFD, FD_CLOEXEC) == 0) continue;
    const int problem = errno;
    for (const int opened : ends) close(opened);
    return problem;
  }
  return 0;
}

// The kernel makes a busy pipe larger by itself.
void enlargePipe(int) noexcept {}

int closeOtherDescriptors(posix_spawn_file_actions_t&, short& flags) noexcept {
  flags = static_cast<short>(flags | POSIX_SPAWN_CLOEXEC_DEFAULT);
  return 0;
}

// The mask is the whole process's and no attribute of posix_spawn: only a process in between can have another.
int spawnWithMask(mode_t mask, const SpawnedProgram& program, SpawnSettings& settings, pid_t& child) {
  int ends[2];
  if (const int problem = makePipe(ends)) return problem;
  const FileDescriptor reading(ends[0]);
  FileDescriptor writing(ends[1]);
  // Where the child's streams are put, its report would be lost.
  if (const int problem = leaveStandardDescriptors(writing)) return problem;
  settings.addFlags(POSIX_SPAWN_SETEXEC);
  if (settings.problem() != 0) return settings.problem();
  const pid_t forked = fork();
  if (forked < 0) return errno;
  if (forked == 0) becomeProgram(mask, program, settings, writing.get());
  writing.reset();
  const int problem = problemReportedTo(reading.get());
  if (problem == 0) {
    child = forked;
    return 0;
  }
  while (waitpid(forked, nullptr, 0) < 0 && errno == EINTR) continue;
  return problem;
}

// The signal would go to the process, hence to any thread: blocking it in this one is of no use. The flag belongs to
// what is open, and stays: taken back, it would be gone for another thread that is writing at that moment.
ssize_t writeWithoutSignal(int descriptor, const void* bytes, std::size_t count) noexcept {
  fcntl(descriptor, F_SETNOSIGPIPE, 1);
  return write(descriptor, bytes, count);
}

}  // namespace vantrell::host
