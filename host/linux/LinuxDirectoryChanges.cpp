// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Permissions and lists of what a folder holds.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/AccessControlCalls.h"
#include "host/linux/FileChangeCalls.h"
#include "host/linux/LinuxDirectoryHandle.h"
#include "host/linux/LinuxObjectHandle.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

Result<FileDescriptor> pin(int folder, const char* name) {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  FileDescriptor location(openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!location) return errnoFailure();
  return location;
}

}  // namespace

ErrorOrNil LinuxDirectoryHandle::setPermissionsOf(const char* name, std::uint16_t permissions) {
  const auto location = pin(folder(), name);
  if (!location) return location.error();
  return writePermissions(AccessListPlace::held(location->get()), permissions);
}

Result<std::uint16_t> LinuxDirectoryHandle::ownPermissionsOf(const char* name, const FileStatus& status) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readOwnPermissions(AccessListPlace(folder(), name), status);
}

Result<std::unique_ptr<ObjectHandle>> LinuxDirectoryHandle::openExaminedObject(const char* name,
                                                                               const FileStatus& status) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  if (status.type == FileType::Regular || status.isDirectory()) {
    // Nobody but root can put a device there that would act on this; a pipe doesn't block.
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    FileDescriptor opened(openat(folder(), name, status.isDirectory() ? kFlags | O_DIRECTORY : kFlags));
    if (opened) return std::make_unique<LinuxObjectHandle>(std::move(opened), LinuxObjectHandle::Kind::Open);
  }
  return openObject(name, FollowLinks::No);
}

Result<ExaminedRights> LinuxDirectoryHandle::examineRightsOf(const char* name, const FileStatus& status,
                                                             const AccessControlList* list) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return examineRights(AccessListPlace(folder(), name), status, list);
}

Result<std::unique_ptr<AccessControlList>> LinuxDirectoryHandle::accessControlListOf(const char* name) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readAccessControlList(AccessListPlace(folder(), name));
}

ErrorOrNil LinuxDirectoryHandle::setAccessControlListOf(const char* name, const AccessControlList* list) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  if (hasAccessControlList(AccessListPlace(folder(), name), list)) return std::nullopt;
  const auto location = pin(folder(), name);
  if (!location) return location.error();
  struct stat status;
  if (fstatat(location->get(), "", &status, AT_EMPTY_PATH) != 0) return errorFromErrno();
  if (S_ISLNK(status.st_mode)) return Error::posix(posix::kNotSupported);
  return writeAccessControlList(AccessListPlace::held(location->get()), list);
}

Result<std::unique_ptr<AccessControlList>> LinuxDirectoryHandle::inheritedAccessControlListOf(const char* name) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readInheritedAccessControlList(folder(), name);
}

}  // namespace vantrell::host
