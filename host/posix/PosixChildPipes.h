// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include "host/ChildProcesses.h"
#include "host/posix/ChildWatch.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// Three pipes, and the watch over the child to come: all descriptors a child needs on this side but those for which
/// the launch makes room by closing the child's ends. No end of a pipe is one of the three standard descriptors, even
/// if this process runs without those, since the child's are put there.
class PosixChildPipes final : public ChildPipes {
 public:
  static Result<std::unique_ptr<PosixChildPipes>> make();

  struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
  };
  Pipe input;
  Pipe output;  // the reading ends of output and error don't block
  Pipe error;
  std::unique_ptr<ChildWatch> watch;

  void closeChildEnds() noexcept;
};

}  // namespace vantrell::host
