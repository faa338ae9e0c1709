// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxDirectoryHandle.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/syscall.h>

#include "foundation/PosixCodes.h"
#include "host/linux/FileStatusCalls.h"
#include "host/linux/LinuxObjectHandle.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kBufferSize = 32 << 10;
// O_NONBLOCK never matters for a folder; it does for what a name may have become meanwhile.
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

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
    case DT_BLK:
      return FileType::BlockDevice;
    default:  // a character device may be a whiteout, which only its status tells
      return FileType::Unknown;
  }
}

// Kernels before 5.6 can't refuse mount points while opening, and some sandboxes forbid the newer call.
Result<FileDescriptor> openWithinDevice(int folder, const char* name) {
  FileDescriptor opened(openat(folder, name, kFolderFlags));
  if (!opened) return errnoFailure();
  const auto outer = readFileStatus(folder, "", AT_EMPTY_PATH);
  const auto inner = readFileStatus(opened.get(), "", AT_EMPTY_PATH);
  if (!outer || !inner) return failure(outer ? inner.error() : outer.error());
  if (outer->device != inner->device) return posixFailure(posix::kCrossDevice);
  return opened;
}

Result<FileDescriptor> openWithinMount(int folder, const char* name) {
  open_how how{};
  how.flags = kFolderFlags;
  how.resolve = RESOLVE_NO_XDEV;
  FileDescriptor opened(static_cast<int>(syscall(SYS_openat2, folder, name, &how, sizeof how)));
  if (opened) return opened;
  if (errno == ENOSYS || errno == EPERM) return openWithinDevice(folder, name);
  return errnoFailure();
}

}  // namespace

Result<FileStatus> LinuxDirectoryHandle::status() const {
  return readFileStatus(folder(), "", AT_EMPTY_PATH);
}

Result<FileStatus> LinuxDirectoryHandle::statusOf(const char* name, FollowLinks follow) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return readFileStatus(folder(), name, follow == FollowLinks::No ? AT_SYMLINK_NOFOLLOW : 0);
}

Result<std::unique_ptr<ObjectHandle>> LinuxDirectoryHandle::openObject(const char* name, FollowLinks follow) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  return openLinuxObject(folder(), name, follow);
}

Result<std::unique_ptr<DirectoryHandle>> LinuxDirectoryHandle::openDirectory(const char* name,
                                                                             MountPoints mountPoints) const {
  if (!isEntryName(name)) return posixFailure(posix::kInvalidArgument);
  FileDescriptor opened;
  if (mountPoints == MountPoints::Refuse) {
    auto result = openWithinMount(folder(), name);
    if (!result) return failure(result.error());
    opened = std::move(*result);
  } else {
    opened.reset(openat(folder(), name, kFolderFlags));
    if (!opened) return errnoFailure();
  }
  return std::make_unique<LinuxDirectoryHandle>(std::move(opened));
}

Result<std::unique_ptr<DirectoryHandle>> LinuxDirectoryHandle::openParent() const {
  FileDescriptor opened(openat(folder(), "..", kFolderFlags));
  if (!opened) return errnoFailure();
  return std::make_unique<LinuxDirectoryHandle>(std::move(opened));
}

Result<std::optional<DirectoryEntry>> LinuxDirectoryHandle::next() {
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<std::byte[]>(kBufferSize);
  for (;;) {
    if (consumed_ == filled_) {
      const ssize_t count = getdents64(folder(), buffer_.get(), kBufferSize);
      // A folder that was removed while it is open reads as missing; it has no entries left.
      if (count < 0 && errno != ENOENT) return errnoFailure();
      consumed_ = 0;
      filled_ = count > 0 ? static_cast<std::size_t>(count) : 0;
      if (filled_ == 0) {
        buffer_.reset();
        return std::optional<DirectoryEntry>{};
      }
    }
    // The kernel aligns its records for this structure.
    const auto* record = reinterpret_cast<const dirent64*>(buffer_.get() + consumed_);
    consumed_ += record->d_reclen;
    position_ = static_cast<std::uint64_t>(record->d_off);
    if (isDotOrDotDot(record->d_name)) continue;
    return std::optional(DirectoryEntry{record->d_name, fileTypeOfEntry(record->d_type)});
  }
}

void LinuxDirectoryHandle::setPosition(std::uint64_t position) {
  lseek(folder(), static_cast<off_t>(position), SEEK_SET);
  consumed_ = filled_ = 0;
  position_ = position;
}

ErrorOrNil LinuxDirectoryHandle::setFlags(std::uint32_t flags) {
  return writePinnedFlags(folder(), flags);
}

ErrorOrNil LinuxDirectoryHandle::setFlagsOf(const char* name, std::uint32_t flags, FollowLinks follow) {
  if (!isEntryName(name)) return Error::posix(posix::kInvalidArgument);
  return writeFileFlags(folder(), name, follow, flags);
}

}  // namespace vantrell::host
