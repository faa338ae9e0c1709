// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include <sys/types.h>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/AccessControlList.h"
#include "host/FileStatus.h"
#include "host/linux/PosixAccessList.h"

namespace vantrell::host {

/// The object whose list is read: an entry of an open folder, never through a link, or what a location-only descriptor
/// holds. Refers to its arguments.
class AccessListPlace {
 public:
  AccessListPlace(int folder, const char* name) noexcept : folder_(folder), name_(name) {}
  explicit AccessListPlace(int location) noexcept : folder_(location) {}

  Result<FileStatus> status() const;
  /// As getxattr.
  ssize_t get(const char* attribute, std::span<std::uint8_t> buffer) const;

 private:
  int folder_;
  const char* name_ = nullptr;
};

/// The access list of the object; nothing when it has only its mode. POSIX error 45 where the file system has no lists,
/// and for a symbolic link.
Result<std::optional<PosixAccessList>> loadAccessList(const AccessListPlace& place);
/// `path` is one of /proc/self/fd (DescriptorPath).
ErrorOrNil storeAccessList(const char* path, const PosixAccessList& list);

/// See ObjectHandle::accessControlList and ownPermissions.
Result<std::unique_ptr<AccessControlList>> readAccessControlList(const AccessListPlace& place);
Result<std::uint16_t> readOwnPermissions(const AccessListPlace& place, const FileStatus& status);

/// Whether the object is certain to have this list (or none, for null) already. One attribute read, two for a folder's.
bool hasAccessControlList(const AccessListPlace& place, const AccessControlList* list);

/// For the object held by the location-only descriptor; see ObjectHandle::setAccessControlList.
ErrorOrNil writeAccessControlList(int location, const AccessControlList* list);

/// See DirectoryHandle::inheritedAccessControlListOf.
Result<std::unique_ptr<AccessControlList>> readInheritedAccessControlList(int folder, const char* name);

}  // namespace vantrell::host
