// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FileStatusCalls.h"

#include <optional>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/DescriptorPath.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {
namespace {

struct FlagPair {
  std::uint32_t bsd;
  unsigned inode;           // FS_IOC_GETFLAGS
  std::uint64_t extended;   // file_getattr
  std::uint64_t attribute;  // statx
};

constexpr FlagPair kFlagPairs[] = {
    {file_flags::kUserNoDump, FS_NODUMP_FL, FS_XFLAG_NODUMP, STATX_ATTR_NODUMP},
    {file_flags::kUserImmutable, FS_IMMUTABLE_FL, FS_XFLAG_IMMUTABLE, STATX_ATTR_IMMUTABLE},
    {file_flags::kUserAppend, FS_APPEND_FL, FS_XFLAG_APPEND, STATX_ATTR_APPEND},
};
constexpr std::uint32_t kKnownFlags = file_flags::kUserNoDump | file_flags::kUserImmutable | file_flags::kUserAppend;
constexpr std::uint64_t kKnownAttributes = STATX_ATTR_NODUMP | STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;
constexpr unsigned kKnownInodeFlags = FS_NODUMP_FL | FS_IMMUTABLE_FL | FS_APPEND_FL;

constexpr unsigned kStatusMask = STATX_TYPE | STATX_MODE | STATX_NLINK | STATX_UID | STATX_GID | STATX_ATIME |
                                 STATX_MTIME | STATX_BTIME | STATX_INO | STATX_SIZE;

FileType fileTypeOf(const struct statx& status) {
  switch (status.stx_mode & S_IFMT) {
    case S_IFREG:
      return FileType::Regular;
    case S_IFDIR:
      return FileType::Directory;
    case S_IFLNK:
      return FileType::SymbolicLink;
    case S_IFIFO:
      return FileType::Fifo;
    case S_IFSOCK:
      return FileType::Socket;
    case S_IFBLK:
      return FileType::BlockDevice;
    case S_IFCHR:
      return status.stx_rdev_major == 0 && status.stx_rdev_minor == 0 ? FileType::Whiteout : FileType::CharacterDevice;
    default:
      return FileType::Unknown;
  }
}

FileStatus fileStatusOf(const struct statx& status) {
  FileStatus result;
  result.type = fileTypeOf(status);
  result.permissions = status.stx_mode & 07777;
  for (const auto& pair : kFlagPairs)
    if (status.stx_attributes & pair.attribute) result.flags |= pair.bsd;
  result.owner = status.stx_uid;
  result.group = status.stx_gid;
  result.device = makedev(status.stx_dev_major, status.stx_dev_minor);
  result.inode = status.stx_ino;
  result.links = status.stx_nlink;
  result.size = status.stx_size;
  result.specialDevice = makedev(status.stx_rdev_major, status.stx_rdev_minor);
  result.accessed = {status.stx_atime.tv_sec, status.stx_atime.tv_nsec};
  result.modified = {status.stx_mtime.tv_sec, status.stx_mtime.tv_nsec};
  if (status.stx_mask & STATX_BTIME) result.created = {status.stx_btime.tv_sec, status.stx_btime.tv_nsec};
  return result;
}

Result<struct statx> callStatx(int folder, const char* name, int extraFlags) {
  struct statx status;
  if (statx(folder, name, AT_NO_AUTOMOUNT | extraFlags, kStatusMask, &status) != 0) return errnoFailure();
  return status;
}

// The answer where nothing is to be done, or can be. A file system that doesn't report these flags through statx may
// still have them, so its silence decides nothing.
std::optional<ErrorOrNil> answerWithoutChange(const struct statx& status, std::uint32_t flags) {
  const auto current = fileStatusOf(status);
  const bool canHaveFlags = current.type == FileType::Regular || current.type == FileType::Directory;
  const bool known = (status.stx_attributes_mask & kKnownAttributes) == kKnownAttributes;
  if (current.flags == flags && (known || !canHaveFlags)) return ErrorOrNil();
  if (canHaveFlags && (flags & ~kKnownFlags) == 0) return std::nullopt;
  return ErrorOrNil(Error::posix(posix::kNotSupported));
}

// The kernel reads and writes an int here, whatever the request's name says about a long.
ErrorOrNil writeInodeFlags(int descriptor, std::uint32_t flags) {
  unsigned inodeFlags = 0;
  if (ioctl(descriptor, FS_IOC_GETFLAGS, &inodeFlags) != 0)
    return errno == ENOTTY ? Error::posix(posix::kNotSupported) : errorFromErrno();
  unsigned wanted = inodeFlags & ~kKnownInodeFlags;
  for (const auto& pair : kFlagPairs)
    if (flags & pair.bsd) wanted |= pair.inode;
  if (wanted == inodeFlags) return std::nullopt;
  if (ioctl(descriptor, FS_IOC_SETFLAGS, &wanted) != 0)
    return errno == ENOTTY ? Error::posix(posix::kNotSupported) : errorFromErrno();
  return std::nullopt;
}

// Since Linux 6.17, under one number on all machines: flags by name, without opening anything.
constexpr long kGetFileAttributes = 468;  // SYS_file_getattr
constexpr long kSetFileAttributes = 469;  // SYS_file_setattr
struct FileAttributes {
  std::uint64_t flags;
  std::uint32_t extentSize;
  std::uint32_t extentCount;
  std::uint32_t project;
  std::uint32_t copyExtentSize;
};

// False where it can't be done so, for whatever reason: the longer way tells.
bool writeFlagsByName(int folder, const char* name, std::uint32_t flags) {
  FileAttributes attributes{};
  if (syscall(kGetFileAttributes, folder, name, &attributes, sizeof attributes, AT_SYMLINK_NOFOLLOW) != 0) return false;
  for (const auto& pair : kFlagPairs)
    attributes.flags = (flags & pair.bsd) ? attributes.flags | pair.extended : attributes.flags & ~pair.extended;
  attributes.extentCount = 0;  // told, not set
  return syscall(kSetFileAttributes, folder, name, &attributes, sizeof attributes, AT_SYMLINK_NOFOLLOW) == 0;
}

}  // namespace

Result<FileStatus> readFileStatus(int folder, const char* name, int extraFlags) {
  const auto status = callStatx(folder, name, extraFlags);
  if (!status) return failure(status.error());
  return fileStatusOf(*status);
}

ErrorOrNil writeFileFlags(int folder, const char* name, FollowLinks follow, std::uint32_t flags) {
  if (follow == FollowLinks::No) {
    const auto status = callStatx(folder, name, AT_SYMLINK_NOFOLLOW);
    if (!status) return status.error();
    if (const auto answer = answerWithoutChange(*status, flags)) return *answer;
    if (writeFlagsByName(folder, name, flags)) return std::nullopt;
  }
  const int noFollow = follow == FollowLinks::No ? O_NOFOLLOW : 0;
  // A location only: it pins the object without opening it, so that what is examined is what is opened afterwards.
  const FileDescriptor location(openat(folder, name, O_PATH | O_CLOEXEC | noFollow));
  if (!location) return errorFromErrno();
  return writePinnedFlags(location.get(), flags);
}

ErrorOrNil writePinnedFlags(int location, std::uint32_t flags) {
  const auto status = callStatx(location, "", AT_EMPTY_PATH);
  if (!status) return status.error();
  if (const auto answer = answerWithoutChange(*status, flags)) return *answer;
  const FileDescriptor object(open(DescriptorPath(location).get(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!object) return errorFromErrno();
  return writeInodeFlags(object.get(), flags);
}

}  // namespace vantrell::host
