// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/UncachedWriting.h"

#include <fcntl.h>
#include <sys/ioccom.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include "host/StorageDevices.h"

namespace vantrell::host {
namespace {

constexpr unsigned long kGetBlockSize = _IOR('d', 24, std::uint32_t);  // DKIOCGETBLOCKSIZE

}  // namespace

// Each disk is there twice: as a block device behind the kernel's cache, and raw, as a character device that takes
// whole units only. Where those are larger, a raw disk refuses the first block: large pieces must not hide that.
bool isDisk(int descriptor, mode_t mode) noexcept {
  if (S_ISBLK(mode)) return true;
  std::uint32_t unit = 0;
  return S_ISCHR(mode) && ioctl(descriptor, kGetBlockSize, &unit) == 0 && unit == StorageDevice::kBlockSize;
}

// A hint, and it asks for no units: what does not suit the device goes through the cache as before.
std::uint64_t beginUncachedWriting(int disk, std::uint64_t) noexcept {
  fcntl(disk, F_NOCACHE, 1);
  return 0;
}

bool endUncachedWriting(int disk) noexcept {
  return fcntl(disk, F_NOCACHE, 0) == 0;
}

}  // namespace vantrell::host
