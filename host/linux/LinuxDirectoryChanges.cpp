// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What a folder's handle changes in it: making, renaming, owner, permissions, lists.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/AccessControlCalls.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"
#include "host/linux/FileChangeCalls.h"
#include "host/linux/FileCreationCalls.h"
#include "host/linux/LinuxDirectoryHandle.h"
#include "host/linux/LinuxFileStreams.h"
#include "host/linux/LinuxObjectHandle.h"

namespace vantrell::host {
namespace {

Result<FileDescriptor> pin(int folder, const char* name) {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  FileDescriptor location(openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!location) return errnoFailure();
  return location;
}

}  // namespace

Result<std::unique_ptr<FileWriter>> LinuxDirectoryHandle::createFile(const char* name, std::uint16_t permissions) {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  auto file = createRegularFile(folder_.get(), name, permissions);
  if (!file) return failure(file.error());
  return std::make_unique<LinuxFileWriter>(std::move(*file));
}

ErrorOrNil LinuxDirectoryHandle::makeDirectory(const char* name, std::uint16_t permissions) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return createFolder(folder_.get(), name, permissions);
}

ErrorOrNil LinuxDirectoryHandle::makeSymbolicLink(const char* name, const std::string& target) {
  if (!isEntryName(name) || target.find('\0') != std::string::npos) return Error::posix(posix::kInvalidArgument);
  if (symlinkat(target.c_str(), folder_.get(), name) != 0) return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil LinuxDirectoryHandle::makeSpecialFile(const char* name, const FileStatus& like) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return createSpecialFile(folder_.get(), name, like);
}

// Another host's handle is another file system.
ErrorOrNil LinuxDirectoryHandle::makeLink(const char* name, const DirectoryHandle& sourceFolder,
                                          const char* sourceName) {
  if (!isEntryName(name) || !isEntryName(sourceName)) return Error::posix(posix::kInvalidArgument);
  const auto* source = dynamic_cast<const LinuxDirectoryHandle*>(&sourceFolder);
  if (!source) return Error::posix(posix::kCrossDevice);
  if (linkat(source->folder_.get(), sourceName, folder_.get(), name, 0) != 0) return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil LinuxDirectoryHandle::rename(const char* name, DirectoryHandle& destination, const char* newName) {
  if (!isEntryName(name) || !isEntryName(newName)) return Error::posix(posix::kInvalidArgument);
  const auto* target = dynamic_cast<const LinuxDirectoryHandle*>(&destination);
  if (!target) return Error::posix(posix::kCrossDevice);
  return renameWithoutReplacing(folder_.get(), name, target->folder_.get(), newName);
}

ErrorOrNil LinuxDirectoryHandle::setOwnerOf(const char* name, std::optional<std::uint32_t> owner,
                                            std::optional<std::uint32_t> group) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return writeOwner(folder_.get(), name, AT_SYMLINK_NOFOLLOW, owner, group);
}

ErrorOrNil LinuxDirectoryHandle::setPermissionsOf(const char* name, std::uint16_t permissions) {
  const auto location = pin(folder_.get(), name);
  if (!location) return location.error();
  return writePermissions(AccessListPlace::held(location->get()), permissions);
}

Result<std::uint16_t> LinuxDirectoryHandle::ownPermissionsOf(const char* name, const FileStatus& status) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readOwnPermissions(AccessListPlace(folder_.get(), name), status);
}

Result<std::unique_ptr<ObjectHandle>> LinuxDirectoryHandle::openExaminedObject(const char* name,
                                                                               const FileStatus& status) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  if (status.type == FileType::Regular || status.isDirectory()) {
    // Nobody but root can put a device there that would act on this; a pipe doesn't block.
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    FileDescriptor opened(openat(folder_.get(), name, status.isDirectory() ? kFlags | O_DIRECTORY : kFlags));
    if (opened) return std::make_unique<LinuxObjectHandle>(std::move(opened), LinuxObjectHandle::Kind::Open);
  }
  return openObject(name, FollowLinks::No);
}

Result<ExaminedRights> LinuxDirectoryHandle::examineRightsOf(const char* name, const FileStatus& status,
                                                             const AccessControlList* list) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return examineRights(AccessListPlace(folder_.get(), name), status, list);
}

Result<std::unique_ptr<AccessControlList>> LinuxDirectoryHandle::accessControlListOf(const char* name) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readAccessControlList(AccessListPlace(folder_.get(), name));
}

ErrorOrNil LinuxDirectoryHandle::setAccessControlListOf(const char* name, const AccessControlList* list) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  if (hasAccessControlList(AccessListPlace(folder_.get(), name), list)) return std::nullopt;
  const auto location = pin(folder_.get(), name);
  if (!location) return location.error();
  struct stat status;
  if (fstatat(location->get(), "", &status, AT_EMPTY_PATH) != 0) return errorFromErrno();
  if (S_ISLNK(status.st_mode)) return Error::posix(posix::kNotSupported);
  return writeAccessControlList(AccessListPlace::held(location->get()), list);
}

Result<std::unique_ptr<AccessControlList>> LinuxDirectoryHandle::inheritedAccessControlListOf(const char* name) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readInheritedAccessControlList(folder_.get(), name);
}

ErrorOrNil LinuxDirectoryHandle::synchronize() {
  if (fsync(folder_.get()) == 0) return std::nullopt;
  if (errno != EBADF) return errorFromErrno();
  // Held as a place only.
  const FileDescriptor folder(openat(folder_.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder || fsync(folder.get()) != 0) return errorFromErrno();
  return std::nullopt;
}

}  // namespace vantrell::host
