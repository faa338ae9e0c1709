// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacDirectoryHandle.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/AccessControlCalls.h"
#include "host/macos/AttributeLists.h"
#include "host/macos/FileStatusCalls.h"
#include "host/macos/MacObjectHandle.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

// O_NONBLOCK never matters for a folder; it does for what a name may have become meanwhile.
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

FileType fileTypeOfEntry(unsigned char type) {
  switch (type) {
    case DT_REG:
      return FileType::Regular;
    case DT_DIR:
      return FileType::Directory;
    case DT_LNK:
      return FileType::SymbolicLink;
    case DT_FIFO:
      return FileType::Fifo;
    case DT_SOCK:
      return FileType::Socket;
    case DT_CHR:
      return FileType::CharacterDevice;
    case DT_BLK:
      return FileType::BlockDevice;
    case DT_WHT:
      return FileType::Whiteout;
    default:
      return FileType::Unknown;
  }
}

// The volumes of one group bear one device number and lie within each other: the mount point tells. The folders by
// which they are joined into one tree are no mount points.
ErrorOrNil refusalToCross(int outer, int inner) {
  struct stat outerStatus;
  struct stat innerStatus;
  if (fstat(outer, &outerStatus) != 0 || fstat(inner, &innerStatus) != 0) return errorFromErrno();
  if (outerStatus.st_dev == innerStatus.st_dev && !isMountPoint(inner)) return std::nullopt;
  return Error::posix(posix::kCrossDevice);
}

}  // namespace

// The stream closes the descriptor.
MacDirectoryHandle::~MacDirectoryHandle() {
  if (stream_) releaseFolder();
}

Result<FileStatus> MacDirectoryHandle::status() const {
  return readFileStatus({folder()});
}

Result<FileStatus> MacDirectoryHandle::statusOf(const char* name, FollowLinks follow) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readFileStatus({folder(), name, follow});
}

Result<std::unique_ptr<ObjectHandle>> MacDirectoryHandle::openObject(const char* name, FollowLinks follow) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return openMacObject(folder(), name, follow);
}

Result<std::unique_ptr<ObjectHandle>> MacDirectoryHandle::openExaminedObject(const char* name,
                                                                             const FileStatus& status) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return openExaminedMacObject(folder(), name, status);
}

Result<std::unique_ptr<DirectoryHandle>> MacDirectoryHandle::openDirectory(const char* name,
                                                                           MountPoints mountPoints) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  FileDescriptor opened(openat(folder(), name, kFolderFlags | O_NOFOLLOW));
  if (!opened) return errnoFailure();
  if (mountPoints == MountPoints::Refuse)
    if (auto refusal = refusalToCross(folder(), opened.get())) return failure(*refusal);
  return std::make_unique<MacDirectoryHandle>(std::move(opened));
}

Result<std::unique_ptr<DirectoryHandle>> MacDirectoryHandle::openParent() const {
  return openMacDirectory(folder(), "..");
}

Result<std::optional<DirectoryEntry>> MacDirectoryHandle::next() {
  if (kind_ == Kind::Place) return posixFailure(posix::kBadDescriptor);
  if (!stream_) stream_.reset(fdopendir(folder()));
  if (!stream_) return errnoFailure();
  const auto entry = listing_.next(stream_.get());
  if (!entry) return failure(entry.error());
  if (!*entry) return std::optional<DirectoryEntry>{};
  return std::optional(DirectoryEntry{(*entry)->name, fileTypeOfEntry((*entry)->type)});
}

ErrorOrNil MacDirectoryHandle::setFlags(std::uint32_t flags) {
  return writeFlags({folder()}, flags);
}

ErrorOrNil MacDirectoryHandle::setFlagsOf(const char* name, std::uint32_t flags, FollowLinks follow) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return writeFlags({folder(), name, follow}, flags);
}

ErrorOrNil MacDirectoryHandle::setPermissionsOf(const char* name, std::uint16_t permissions) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return writePermissions({folder(), name}, permissions);
}

// A list stands beside the mode here and shows nowhere in it.
Result<std::uint16_t> MacDirectoryHandle::ownPermissionsOf(const char* name, const FileStatus& status) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return status.permissions;
}

Result<ExaminedRights> MacDirectoryHandle::examineRightsOf(const char* name, const FileStatus& status,
                                                           const AccessControlList* list) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return examineRights({folder(), name}, status, list);
}

Result<std::unique_ptr<AccessControlList>> MacDirectoryHandle::accessControlListOf(const char* name) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readAccessControlList({folder(), name});
}

ErrorOrNil MacDirectoryHandle::setAccessControlListOf(const char* name, const AccessControlList* list) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  const auto status = readFileStatus({folder(), name});
  if (!status) return status.error();
  if (status->isSymbolicLink()) return Error::posix(posix::kNotSupported);
  return writeAccessControlList({folder(), name}, list);
}

Result<std::unique_ptr<AccessControlList>> MacDirectoryHandle::inheritedAccessControlListOf(const char* name) const {
  return accessControlListOf(name);
}

Result<std::unique_ptr<DirectoryHandle>> openMacDirectory(int folder, const char* name, FollowLinks follow) {
  const int noFollow = follow == FollowLinks::No ? O_NOFOLLOW : 0;
  FileDescriptor opened(openat(folder, name, kFolderFlags | noFollow));
  if (!opened) return errnoFailure();
  return std::make_unique<MacDirectoryHandle>(std::move(opened));
}

}  // namespace vantrell::host
