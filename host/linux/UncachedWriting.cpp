// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/UncachedWriting.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

namespace vantrell::host {

bool isDisk(int, mode_t mode) noexcept {
  return S_ISBLK(mode);
}

// Set on the open descriptor rather than by opening once more: opening a device can have effects of its own.
std::uint64_t beginUncachedWriting(int disk, std::uint64_t piece) noexcept {
  int size = 0;
  const int flags = fcntl(disk, F_GETFL);
  if (flags < 0 || ioctl(disk, BLKSSZGET, &size) != 0 || size < 1 || piece % static_cast<unsigned>(size) != 0) return 0;
  return fcntl(disk, F_SETFL, flags | O_DIRECT) == 0 ? static_cast<std::uint64_t>(size) : 0;
}

bool endUncachedWriting(int disk) noexcept {
  const int flags = fcntl(disk, F_GETFL);
  return flags >= 0 && fcntl(disk, F_SETFL, flags & ~O_DIRECT) == 0;
}

}  // namespace vantrell::host
