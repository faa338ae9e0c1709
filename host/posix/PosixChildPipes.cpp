// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixChildPipes.h"

#include <utility>

#include <fcntl.h>

#include "host/posix/ErrorNumbers.h"
#include "host/posix/SpawnCalls.h"
#include "host/posix/StandardDescriptors.h"

namespace vantrell::host {
namespace {

ErrorOrNil openPipe(PosixChildPipes::Pipe& pipe) {
  int ends[2];
  if (const int problem = makePipe(ends)) return errorFromErrno(problem);
  pipe.reading.reset(ends[0]);
  pipe.writing.reset(ends[1]);
  for (auto* end : {&pipe.reading, &pipe.writing}) {
    if (const int problem = leaveStandardDescriptors(*end)) return errorFromErrno(problem);
  }
  return std::nullopt;
}

ErrorOrNil openOutputPipe(PosixChildPipes::Pipe& pipe) {
  if (auto problem = openPipe(pipe)) return problem;
  if (fcntl(pipe.reading.get(), F_SETFL, O_RDONLY | O_NONBLOCK) != 0) return errorFromErrno();
  enlargePipe(pipe.writing.get());
  return std::nullopt;
}

}  // namespace

Result<std::unique_ptr<PosixChildPipes>> PosixChildPipes::make() {
  auto pipes = std::make_unique<PosixChildPipes>();
  if (const auto problem = openPipe(pipes->input)) return failure(*problem);
  if (const auto problem = openOutputPipe(pipes->output)) return failure(*problem);
  if (const auto problem = openOutputPipe(pipes->error)) return failure(*problem);
  auto watch = makeChildWatch();
  if (!watch) return failure(watch.error());
  pipes->watch = std::move(*watch);
  return pipes;
}

void PosixChildPipes::closeChildEnds() noexcept {
  input.reading.reset();
  output.writing.reset();
  error.writing.reset();
}

}  // namespace vantrell::host
