// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/FileSystem.h"

namespace vantrell::host {

/// Flags are the inode flags i, a and d; a whiteout is the character device 0:0.
class LinuxFileSystem final : public FileSystem {
 public:
  Result<FileStatus> status(const std::string& path, FollowLinks follow) override;
  ErrorOrNil setFlags(const std::string& path, std::uint32_t flags, FollowLinks follow) override;
  Result<std::unique_ptr<DirectoryHandle>> openDirectory(const std::string& path, FollowLinks follow) override;
  Result<Location> locate(const std::string& path) override;
  Result<std::unique_ptr<ObjectHandle>> openObject(const std::string& path, FollowLinks follow) override;
  const char* finderInfoAttributeName() const noexcept override { return "user.com.apple.FinderInfo"; }
  Result<std::unique_ptr<AccessControlList>> accessControlListFromExternalForm(DataView bytes) override;
  ErrorOrNil removeFile(const std::string& path) override;
  ErrorOrNil removeDirectory(const std::string& path) override;
  Result<std::string> readLink(const std::string& path) override;
  Result<std::unique_ptr<FileContents>> loadFile(const std::string& path, std::uint64_t maximumSize) override;
};

}  // namespace vantrell::host
