// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <utility>

#include "host/FileStreams.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

class LinuxFileReader final : public FileReader {
 public:
  explicit LinuxFileReader(FileDescriptor file) noexcept : file_(std::move(file)) {}

  Result<FileStatus> status() const override;
  Result<std::size_t> read(std::span<std::uint8_t> buffer) override;

  int descriptor() const noexcept { return file_.get(); }

 private:
  FileDescriptor file_;
};

class LinuxFileWriter final : public FileWriter {
 public:
  explicit LinuxFileWriter(FileDescriptor file) noexcept : file_(std::move(file)) {}

  Result<FileStatus> status() const override;
  ErrorOrNil write(DataView bytes) override;
  ErrorOrNil copyFrom(FileReader& source) override;
  ErrorOrNil synchronize() override;

 private:
  FileDescriptor file_;
};

/// See DirectoryHandle::openFile.
Result<std::unique_ptr<FileReader>> openRegularFile(int folder, const char* name);

}  // namespace vantrell::host
