// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include <sys/types.h>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/AccessControlList.h"
#include "host/DirectoryHandle.h"
#include "host/FileStatus.h"
#include "host/linux/PosixAccessList.h"

namespace vantrell::host {

/// The object whose list and mode are read and written: an entry of an open folder, never through a link and only to
/// be read; what a location-only descriptor holds; or what is open. The kernel's ways to these differ, and so does what
/// they cost. Refers to its arguments.
class AccessListPlace {
 public:
  AccessListPlace(int folder, const char* name) noexcept : descriptor_(folder), name_(name) {}
  static AccessListPlace held(int location) noexcept { return {location, Way::Held}; }
  static AccessListPlace open(int descriptor) noexcept { return {descriptor, Way::Open}; }

  Result<FileStatus> status() const;
  // As getxattr, setxattr, removexattr and chmod.
  ssize_t get(const char* attribute, std::span<std::uint8_t> buffer) const;
  int set(const char* attribute, DataView value) const;
  int remove(const char* attribute) const;
  int changeMode(unsigned mode) const;

 private:
  enum class Way : std::uint8_t { Entry, Held, Open };
  AccessListPlace(int descriptor, Way way) noexcept : descriptor_(descriptor), way_(way) {}

  int descriptor_;
  const char* name_ = nullptr;
  Way way_ = Way::Entry;
};

/// The access list of the object; nothing when it has only its mode. POSIX error 45 where the file system has no lists,
/// and for a symbolic link.
Result<std::optional<PosixAccessList>> loadAccessList(const AccessListPlace& place);
ErrorOrNil storeAccessList(const AccessListPlace& place, const PosixAccessList& list);

/// See ObjectHandle::accessControlList and ownPermissions.
Result<std::unique_ptr<AccessControlList>> readAccessControlList(const AccessListPlace& place);
Result<std::uint16_t> readOwnPermissions(const AccessListPlace& place, const FileStatus& status);

/// Whether the object is certain to have this list (or none, for null) already. One attribute read, two for a folder's.
bool hasAccessControlList(const AccessListPlace& place, const AccessControlList* list);

/// See DirectoryHandle::examineRightsOf. One attribute read, two for a folder's.
Result<ExaminedRights> examineRights(const AccessListPlace& place, const FileStatus& status,
                                     const AccessControlList* list);

/// See ObjectHandle::setAccessControlList.
ErrorOrNil writeAccessControlList(const AccessListPlace& place, const AccessControlList* list);

/// See DirectoryHandle::inheritedAccessControlListOf.
Result<std::unique_ptr<AccessControlList>> readInheritedAccessControlList(int folder, const char* name);

}  // namespace vantrell::host
