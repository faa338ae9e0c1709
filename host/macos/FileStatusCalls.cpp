// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/FileStatusCalls.h"

#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/AttributeLists.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

FileType fileTypeOf(mode_t mode) {
  switch (mode & S_IFMT) {
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
    case S_IFCHR:
      return FileType::CharacterDevice;
    case S_IFBLK:
      return FileType::BlockDevice;
    case S_IFWHT:
      return FileType::Whiteout;
    default:
      return FileType::Unknown;
  }
}

Date dateOf(const timespec& time) {
  return {time.tv_sec, static_cast<std::uint32_t>(time.tv_nsec)};
}

int lookupFlags(const ObjectPlace& place) {
  return place.follow == FollowLinks::No ? AT_SYMLINK_NOFOLLOW : 0;
}

timespec timeOf(const std::optional<Date>& date) {
  if (!date) return {0, UTIME_OMIT};
  return {static_cast<time_t>(date->seconds), static_cast<long>(date->nanoseconds)};
}
// Larger numbers have meanings of their own.
bool isDate(const std::optional<Date>& date) {
  return !date || date->nanoseconds <= 999'999'999;
}

ErrorOrNil callForTimes(const ObjectPlace& place, const timespec* times) {
  const int result = place.name ? utimensat(place.descriptor, place.name, times, lookupFlags(place))
                                : futimens(place.descriptor, times);
  if (result != 0) return errorFromErrno();
  return std::nullopt;
}

}  // namespace

FileStatus fileStatusOf(const struct stat& status) {
  FileStatus result;
  result.type = fileTypeOf(status.st_mode);
  result.permissions = status.st_mode & 07777;
  result.flags = status.st_flags;
  result.owner = status.st_uid;
  result.group = status.st_gid;
  result.device = static_cast<std::uint32_t>(status.st_dev);
  result.inode = status.st_ino;
  result.links = status.st_nlink;
  result.size = static_cast<std::uint64_t>(status.st_size);
  if (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode))
    result.specialDevice = static_cast<std::uint32_t>(status.st_rdev);
  result.accessed = dateOf(status.st_atimespec);
  result.modified = dateOf(status.st_mtimespec);
  // Zero, or less, where the file system keeps none.
  if (status.st_birthtimespec.tv_sec > 0) result.created = dateOf(status.st_birthtimespec);
  return result;
}

Result<FileStatus> readFileStatus(const ObjectPlace& place) {
  struct stat status;
  const int result = place.name ? fstatat(place.descriptor, place.name, &status, lookupFlags(place))
                                : fstat(place.descriptor, &status);
  if (result != 0) return errnoFailure();
  return fileStatusOf(status);
}

ErrorOrNil writeFlags(const ObjectPlace& place, std::uint32_t flags) {
  const auto status = readFileStatus(place);
  if (!status) return status.error();
  if (status->flags == flags) return std::nullopt;
  return writeAttribute(place, ATTR_CMN_FLAGS, DataView(reinterpret_cast<const std::uint8_t*>(&flags), sizeof flags));
}

ErrorOrNil writePermissions(const ObjectPlace& place, std::uint16_t permissions) {
  const mode_t mode = permissions & 07777;
  const int result =
      place.name ? fchmodat(place.descriptor, place.name, mode, lookupFlags(place)) : fchmod(place.descriptor, mode);
  if (result != 0) return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil writeTimes(const ObjectPlace& place, std::optional<Date> accessed, std::optional<Date> modified) {
  if (!isDate(accessed) || !isDate(modified)) return Error::posix(posix::kInvalidArgument);
  if (!accessed && !modified) return std::nullopt;
  const timespec times[] = {timeOf(accessed), timeOf(modified)};
  return callForTimes(place, times);
}

ErrorOrNil writePresentTime(const ObjectPlace& place) {
  return callForTimes(place, nullptr);
}

}  // namespace vantrell::host
