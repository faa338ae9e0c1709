// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "host/ObjectHandle.h"
#include "host/macos/ObjectLookup.h"
#include "host/macos/ObjectPlace.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// Holds a regular file, a folder or a symbolic link by a descriptor.
///
/// Pipes, sockets and devices can't be held without being opened, nor can what may not be read: they are named in their
/// folder, which is held, and looked at before each act. One that has been moved or replaced is POSIX error 2 from then
/// on. Between look and act somebody who may write to that folder could replace the object.
class MacObjectHandle final : public ObjectHandle {
 public:
  explicit MacObjectHandle(FileDescriptor object) noexcept : descriptor_(std::move(object)) {}
  /// The object of this status.
  MacObjectHandle(ObjectName object, const FileStatus& status)
      : descriptor_(std::move(object.folder)),
        name_(std::move(object.name)),
        type_(status.type),
        device_(status.device),
        inode_(status.inode) {}

  Result<FileStatus> status() const override;
  Result<std::uint16_t> ownPermissions(const FileStatus& status) const override { return status.permissions; }
  Result<std::unique_ptr<DirectoryHandle>> openDirectory() const override;
  ErrorOrNil setOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group) override;
  ErrorOrNil setPermissions(std::uint16_t permissions) override;
  ErrorOrNil setFlags(std::uint32_t flags) override;
  ErrorOrNil setTimes(std::optional<Date> accessed, std::optional<Date> modified) override;
  ErrorOrNil touch() override;
  Result<std::vector<std::string>> extendedAttributeNames(FSCompression compression) const override;
  Result<Data> extendedAttribute(const std::string& name) const override;
  ErrorOrNil setExtendedAttribute(const std::string& name, DataView value) override;
  ErrorOrNil removeExtendedAttribute(const std::string& name, FSCompression compression) override;
  Result<std::unique_ptr<AccessControlList>> accessControlList() const override;
  ErrorOrNil setAccessControlList(const AccessControlList* list) override;

 private:
  bool isHeld() const noexcept { return name_.empty(); }
  Result<ObjectPlace> place() const;
  Result<int> attributeDescriptor(FileDescriptor& opened) const;

  FileDescriptor descriptor_;  // the object, or its folder where it is named
  std::string name_;
  FileType type_ = FileType::Unknown;  // these three where it is named
  std::uint64_t device_ = 0;
  std::uint64_t inode_ = 0;
};

/// The object `name` in the open folder `folder` (or at a path, with AT_FDCWD).
Result<std::unique_ptr<ObjectHandle>> openMacObject(int folder, const char* name, FollowLinks follow);

/// An entry whose status was just read.
Result<std::unique_ptr<ObjectHandle>> openExaminedMacObject(int folder, const char* name, const FileStatus& status);

}  // namespace vantrell::host
