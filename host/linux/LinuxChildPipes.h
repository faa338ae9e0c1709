// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/ChildProcesses.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// Three pipes, and the event that wakes the relay on an interruption: all descriptors a child needs on this side but
/// the one for the process itself, for which the launch makes room by closing the child's ends. None of them is one of
/// the three standard descriptors, even if this process runs without those, since the child's are put there.
class LinuxChildPipes final : public ChildPipes {
 public:
  static Result<std::unique_ptr<LinuxChildPipes>> make();

  struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
  };
  Pipe input;
  Pipe output;  // the reading ends of output and error don't block
  Pipe error;
  FileDescriptor interruption;

  void closeChildEnds() noexcept;
};

}  // namespace vantrell::host
