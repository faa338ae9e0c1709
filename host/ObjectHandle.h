// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Date.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/AccessControlList.h"
#include "host/FileStatus.h"

namespace vantrell::host {

class DirectoryHandle;

/// Whether the attribute that holds a compressed file's content counts as an attribute. Where the file system has no
/// such attribute it makes no difference.
enum class FSCompression : bool { Hide, Expose };

/// One object of any type, a symbolic link itself included, held fast whatever its path comes to lead to. Holding it
/// does not open it: no device acts, no pipe blocks. Failures are POSIX errors without user info. One thread at a time.
///
/// On macOS pipes, sockets, devices and what may not be read are held by their name in a folder that is held: POSIX
/// error 2 once another object, or none, bears that name.
class ObjectHandle {
 public:
  virtual ~ObjectHandle() = default;

  virtual Result<FileStatus> status() const = 0;

  /// The twelve mode bits that owner, owning group and others really have; see DirectoryHandle::ownPermissionsOf.
  virtual Result<std::uint16_t> ownPermissions(const FileStatus& status) const = 0;

  /// The folder that this is, for enumeration; POSIX error 20 for anything else.
  virtual Result<std::unique_ptr<DirectoryHandle>> openDirectory() const = 0;

  /// What is left out stays. The kernel may clear the set-user-ID and set-group-ID bits.
  virtual ErrorOrNil setOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group) = 0;

  /// The low twelve bits. Success without effect for a symbolic link where links have no mode. The entries of an
  /// extended access control list keep what they grant.
  virtual ErrorOrNil setPermissions(std::uint16_t permissions) = 0;

  /// Exactly these file_flags; see DirectoryHandle::setFlagsOf.
  virtual ErrorOrNil setFlags(std::uint32_t flags) = 0;

  /// What is left out stays.
  virtual ErrorOrNil setTimes(std::optional<Date> accessed, std::optional<Date> modified) = 0;

  /// Both times become the system's own present time.
  virtual ErrorOrNil touch() = 0;

  /// Names as bytes, without those that hold access control lists. Empty where the file system has no attributes, or
  /// none for objects of this type.
  virtual Result<std::vector<std::string>> extendedAttributeNames(FSCompression compression) const = 0;
  /// POSIX error 93 when there is none of this name.
  virtual Result<Data> extendedAttribute(const std::string& name) const = 0;
  virtual ErrorOrNil setExtendedAttribute(const std::string& name, DataView value) = 0;
  virtual ErrorOrNil removeExtendedAttribute(const std::string& name, FSCompression compression) = 0;

  /// Null when the object has none; an error means that it can't be known, POSIX error 45 that the file system has no
  /// such lists.
  virtual Result<std::unique_ptr<AccessControlList>> accessControlList() const = 0;
  /// Null and an empty list remove it, which is success where there is none. Owner, group and mode stay as they are.
  virtual ErrorOrNil setAccessControlList(const AccessControlList* list) = 0;
};

}  // namespace vantrell::host
