// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/FileSystem.h"

namespace vantrell::host {

/// Flags are all that the kernel shows; lists are those of ACL_TYPE_EXTENDED. Symbolic links have modes, flags and
/// attributes of their own, but no lists.
class MacFileSystem final : public FileSystem {
 public:
  Result<FileStatus> status(const std::string& path, FollowLinks follow) override;
  ErrorOrNil setFlags(const std::string& path, std::uint32_t flags, FollowLinks follow) override;
  Result<std::unique_ptr<DirectoryHandle>> openDirectory(const std::string& path, FollowLinks follow) override;
  Result<Location> locate(const std::string& path) override;
  Result<std::unique_ptr<ObjectHandle>> openObject(const std::string& path, FollowLinks follow) override;
  std::string_view unwrittenFolder() const noexcept override { return "/private"; }
  const char* finderInfoAttributeName() const noexcept override { return "com.apple.FinderInfo"; }
  Result<std::unique_ptr<AccessControlList>> accessControlListFromExternalForm(DataView bytes) override;
  ErrorOrNil removeFile(const std::string& path) override;
  ErrorOrNil removeDirectory(const std::string& path) override;
  Result<std::string> readLink(const std::string& path) override;
  Result<std::unique_ptr<FileContents>> loadFile(const std::string& path, std::uint64_t maximumSize) override;
};

}  // namespace vantrell::host
