// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// Gives what is open another number where it has one of the three standard ones, which a process that runs without
/// those hands out like any other. Closed on exec. An error number, or 0.
inline int leaveStandardDescriptors(FileDescriptor& descriptor) noexcept {
  if (descriptor.get() > STDERR_FILENO) return 0;
  const int other = fcntl(descriptor.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (other < 0) return errno;
  descriptor.reset(other);
  return 0;
}

}  // namespace vantrell::host
