// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include <dirent.h>

#include "host/posix/FileDescriptor.h"
#include "host/posix/FolderListing.h"
#include "host/posix/PosixDirectoryHandle.h"

namespace vantrell::host {

/// Enumerates in an order of names that is this system's own; see FolderListing.
class MacDirectoryHandle final : public PosixDirectoryHandle {
 public:
  /// A folder opened for reading, or one held as a place, which can't be enumerated.
  enum class Kind : std::uint8_t { Readable, Place };
  explicit MacDirectoryHandle(FileDescriptor folder, Kind kind = Kind::Readable) noexcept
      : PosixDirectoryHandle(std::move(folder)), kind_(kind) {}
  ~MacDirectoryHandle() override;

  Result<FileStatus> status() const override;
  Result<FileStatus> statusOf(const char* name, FollowLinks follow) const override;
  Result<std::unique_ptr<ObjectHandle>> openObject(const char* name, FollowLinks follow) const override;
  Result<std::unique_ptr<ObjectHandle>> openExaminedObject(const char* name, const FileStatus& status) const override;
  Result<std::unique_ptr<DirectoryHandle>> openDirectory(const char* name, MountPoints mountPoints) const override;
  Result<std::unique_ptr<DirectoryHandle>> openParent() const override;
  Result<std::optional<DirectoryEntry>> next() override;
  std::uint64_t position() const noexcept override { return listing_.position(); }
  void setPosition(std::uint64_t position) override { listing_.setPosition(position); }
  ErrorOrNil setFlags(std::uint32_t flags) override;
  ErrorOrNil setFlagsOf(const char* name, std::uint32_t flags, FollowLinks follow) override;
  ErrorOrNil setPermissionsOf(const char* name, std::uint16_t permissions) override;
  Result<std::uint16_t> ownPermissionsOf(const char* name, const FileStatus& status) const override;
  Result<ExaminedRights> examineRightsOf(const char* name, const FileStatus& status,
                                         const AccessControlList* list) const override;
  Result<std::unique_ptr<AccessControlList>> accessControlListOf(const char* name) const override;
  ErrorOrNil setAccessControlListOf(const char* name, const AccessControlList* list) override;
  /// What a new entry inherits is in force at once: its own list.
  Result<std::unique_ptr<AccessControlList>> inheritedAccessControlListOf(const char* name) const override;

 private:
  struct Closing {
    void operator()(DIR* stream) const noexcept { closedir(stream); }
  };

  Kind kind_;
  std::unique_ptr<DIR, Closing> stream_;  // the folder's descriptor belongs to it once there is one
  FolderListing listing_;
};

/// The folder `name` in the open folder `folder` (or at a path, with AT_FDCWD), opened for reading. POSIX error 20 or
/// 62 for anything else.
Result<std::unique_ptr<DirectoryHandle>> openMacDirectory(int folder, const char* name,
                                                          FollowLinks follow = FollowLinks::No);

}  // namespace vantrell::host
