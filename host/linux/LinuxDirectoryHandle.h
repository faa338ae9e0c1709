// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <memory>

#include "host/posix/FileDescriptor.h"
#include "host/posix/PosixDirectoryHandle.h"

namespace vantrell::host {

class LinuxDirectoryHandle final : public PosixDirectoryHandle {
 public:
  /// A folder opened for reading, or held as a place (O_PATH): then it can't be enumerated.
  explicit LinuxDirectoryHandle(FileDescriptor folder) noexcept : PosixDirectoryHandle(std::move(folder)) {}

  Result<FileStatus> status() const override;
  Result<FileStatus> statusOf(const char* name, FollowLinks follow) const override;
  Result<std::unique_ptr<ObjectHandle>> openObject(const char* name, FollowLinks follow) const override;
  Result<std::unique_ptr<DirectoryHandle>> openDirectory(const char* name, MountPoints mountPoints) const override;
  Result<std::unique_ptr<DirectoryHandle>> openParent() const override;
  Result<std::optional<DirectoryEntry>> next() override;
  std::uint64_t position() const noexcept override { return position_; }
  void setPosition(std::uint64_t position) override;
  ErrorOrNil setFlags(std::uint32_t flags) override;
  ErrorOrNil setFlagsOf(const char* name, std::uint32_t flags, FollowLinks follow) override;

  // In LinuxDirectoryChanges.cpp.
  ErrorOrNil setPermissionsOf(const char* name, std::uint16_t permissions) override;
  Result<std::unique_ptr<ObjectHandle>> openExaminedObject(const char* name, const FileStatus& status) const override;
  Result<ExaminedRights> examineRightsOf(const char* name, const FileStatus& status,
                                         const AccessControlList* list) const override;
  Result<std::uint16_t> ownPermissionsOf(const char* name, const FileStatus& status) const override;
  Result<std::unique_ptr<AccessControlList>> accessControlListOf(const char* name) const override;
  ErrorOrNil setAccessControlListOf(const char* name, const AccessControlList* list) override;
  Result<std::unique_ptr<AccessControlList>> inheritedAccessControlListOf(const char* name) const override;

 private:
  std::unique_ptr<std::byte[]>
      buffer_;  // records as the kernel hands them out; none before the first and after the last
  std::size_t filled_ = 0;
  std::size_t consumed_ = 0;
  std::uint64_t position_ = 0;
};

}  // namespace vantrell::host
