// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <utility>

#include "host/DirectoryHandle.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// What is the same for every kernel that takes folders by descriptor.
class PosixDirectoryHandle : public DirectoryHandle {
 public:
  void rewind() final { setPosition(0); }
  ErrorOrNil removeFile(const char* name) final;
  ErrorOrNil removeDirectory(const char* name) final;
  Result<std::string> readLinkOf(const char* name) const final;
  Result<std::unique_ptr<FileReader>> openFile(const char* name) const final;
  Result<std::unique_ptr<FileWriter>> createFile(const char* name, std::uint16_t permissions) final;
  ErrorOrNil makeDirectory(const char* name, std::uint16_t permissions) final;
  ErrorOrNil makeSymbolicLink(const char* name, const std::string& target) final;
  ErrorOrNil makeSpecialFile(const char* name, const FileStatus& like) final;
  ErrorOrNil makeLink(const char* name, const DirectoryHandle& sourceFolder, const char* sourceName) final;
  ErrorOrNil rename(const char* name, DirectoryHandle& destination, const char* newName) final;
  ErrorOrNil setOwnerOf(const char* name, std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group) final;
  ErrorOrNil synchronize() final;

 protected:
  explicit PosixDirectoryHandle(FileDescriptor folder) noexcept : folder_(std::move(folder)) {}

  int folder() const noexcept { return folder_.get(); }
  /// Leaves the descriptor to another owner; nothing but the destructor may follow.
  void releaseFolder() noexcept { folder_.release(); }

 private:
  FileDescriptor folder_;
};

}  // namespace vantrell::host
