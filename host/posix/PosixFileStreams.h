// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <utility>

#include "host/FileStreams.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

class PosixFileReader final : public FileReader {
 public:
  explicit PosixFileReader(FileDescriptor file) noexcept : file_(std::move(file)) {}

  Result<FileStatus> status() const override;
  Result<std::size_t> read(std::span<std::uint8_t> buffer) override;

  int descriptor() const noexcept { return file_.get(); }

 private:
  FileDescriptor file_;
};

class PosixFileWriter final : public FileWriter {
 public:
  explicit PosixFileWriter(FileDescriptor file) noexcept : file_(std::move(file)) {}

  Result<FileStatus> status() const override;
  ErrorOrNil write(DataView bytes) override;
  ErrorOrNil copyFrom(FileReader& source) override;
  ErrorOrNil synchronize() override;

 private:
  FileDescriptor file_;
};

}  // namespace vantrell::host
