// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileStatus.h"

namespace vantrell::host {

/// A file's whole content, read or mapped.
class FileContents {
 public:
  virtual ~FileContents() = default;
  virtual DataView bytes() const noexcept = 0;
};

/// A regular file open for reading from its start. Closed by the destructor. One thread at a time.
class FileReader {
 public:
  virtual ~FileReader() = default;

  /// Of the file that is open, whatever its name has come to stand for.
  virtual Result<FileStatus> status() const = 0;

  /// The number of bytes read, 0 at the end only.
  virtual Result<std::size_t> read(std::span<std::uint8_t> buffer) = 0;
};

/// A regular file that was just created, open for writing. Closed by the destructor. One thread at a time.
class FileWriter {
 public:
  virtual ~FileWriter() = default;

  /// Of the file that is open, whatever its name has come to stand for.
  virtual Result<FileStatus> status() const = 0;

  /// All of it, or the error that stopped it (28: no space left, and others); what was written before that stays.
  virtual ErrorOrNil write(DataView bytes) = 0;

  /// Copies the rest of `source` without a way through this process where the kernel can do that.
  virtual ErrorOrNil copyFrom(FileReader& source) = 0;

  /// Returns when content and status have reached the storage device.
  virtual ErrorOrNil synchronize() = 0;
};

}  // namespace vantrell::host
