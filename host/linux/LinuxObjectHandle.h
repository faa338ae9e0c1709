// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <utility>

#include "host/ObjectHandle.h"
#include "host/linux/AccessControlCalls.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// Holds the object by a descriptor that is a location only (O_PATH).
class LinuxObjectHandle final : public ObjectHandle {
 public:
  enum class Kind : std::uint8_t { Held, Open };

  /// A location-only descriptor, or one that is open for reading.
  explicit LinuxObjectHandle(FileDescriptor location, Kind kind = Kind::Held) noexcept
      : location_(std::move(location)), kind_(kind) {}

  Result<FileStatus> status() const override;
  Result<std::uint16_t> ownPermissions(const FileStatus& status) const override;
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
  AccessListPlace place() const;

  FileDescriptor location_;
  Kind kind_;
  mutable FileDescriptor opened_;  // the same object, once list or mode have been asked for, if it could be opened
  mutable bool hasTriedToOpen_ = false;
};

/// The object `name` in the open folder `folder` (or at a path, with AT_FDCWD).
Result<std::unique_ptr<ObjectHandle>> openLinuxObject(int folder, const char* name, FollowLinks follow);

}  // namespace vantrell::host
