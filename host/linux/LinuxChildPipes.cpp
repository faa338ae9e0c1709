// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxChildPipes.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

// Four times the usual size: fewer switches between a child that writes much and the relay. What is larger than a
// processor's own cache gains nothing.
constexpr int kPipeSize = 256 << 10;

ErrorOrNil leaveStandardDescriptors(FileDescriptor& descriptor) {
  if (descriptor.get() > STDERR_FILENO) return std::nullopt;
  const int other = fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (other < 0) return errorFromErrno();
  descriptor.reset(other);
  return std::nullopt;
}

ErrorOrNil makePipe(LinuxChildPipes::Pipe& pipe) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return errorFromErrno();
  pipe.reading.reset(ends[0]);
  pipe.writing.reset(ends[1]);
  if (auto problem = leaveStandardDescriptors(pipe.reading)) return problem;
  return leaveStandardDescriptors(pipe.writing);
}

ErrorOrNil makeOutputPipe(LinuxChildPipes::Pipe& pipe) {
  if (auto problem = makePipe(pipe)) return problem;
  if (fcntl(pipe.reading.get(), F_SETFL, O_RDONLY | O_NONBLOCK) != 0) return errorFromErrno();
  // Refused where a user has used up an allowance; the usual size serves as well.
  static_cast<void>(fcntl(pipe.writing.get(), F_SETPIPE_SZ, kPipeSize));
  return std::nullopt;
}

}  // namespace

Result<std::unique_ptr<LinuxChildPipes>> LinuxChildPipes::make() {
  auto pipes = std::make_unique<LinuxChildPipes>();
  if (const auto problem = makePipe(pipes->input)) return failure(*problem);
  if (const auto problem = makeOutputPipe(pipes->output)) return failure(*problem);
  if (const auto problem = makeOutputPipe(pipes->error)) return failure(*problem);
  pipes->interruption.reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!pipes->interruption) return errnoFailure();
  if (const auto problem = leaveStandardDescriptors(pipes->interruption)) return failure(*problem);
  return pipes;
}

void LinuxChildPipes::closeChildEnds() noexcept {
  input.reading.reset();
  output.writing.reset();
  error.writing.reset();
}

}  // namespace vantrell::host
