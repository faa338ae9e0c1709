// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/Result.h"

namespace vantrell::host {

/// A storage device, or any other object, opened for writing only. One thread at a time.
class StorageDevice {
 public:
  static constexpr std::uint64_t kBlockSize = 512;

  virtual ~StorageDevice() = default;

  /// Writes `count` blocks of zero bytes, one after the other, from the device's start; to be called once. Ends at the
  /// first block that can't be written whole, with the system's error; where the system wrote a part of it and gave no
  /// reason, with POSIX error 28 (no space).
  ///
  /// The bytes are written for real: nothing is discarded or unmapped instead. An implementation may write many blocks
  /// at once so long as result, error and what the device holds afterwards are the same as if it had not; of a device
  /// with defects, blocks behind the first bad one may have been written.
  virtual ErrorOrNil writeZeroBlocks(std::uint64_t count) = 0;
};

/// Safe from any thread.
class StorageDevices {
 public:
  virtual ~StorageDevices() = default;

  /// Opens what is at `path`, links followed; nothing is created. A zero byte in the path is POSIX error 22.
  virtual Result<std::unique_ptr<StorageDevice>> openForWriting(const std::string& path) = 0;
};

}  // namespace vantrell::host
