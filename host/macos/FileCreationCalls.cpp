// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/FileCreationCalls.h"

#include <cstdio>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/FileStatusCalls.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/RenameAfterCheck.h"

// Since 10.12 and in no header: the working folder of this thread alone, -1 for the process's again.
extern "C" int pthread_fchdir_np(int folder);

namespace vantrell::host {
namespace {

constexpr mode_t kAccessBits = 0777;

/// A working folder for this thread until the end of the scope.
class ThreadWorkingFolder {
 public:
  explicit ThreadWorkingFolder(int folder) noexcept : isEntered_(pthread_fchdir_np(folder) == 0) {}
  ThreadWorkingFolder(const ThreadWorkingFolder&) = delete;
  ThreadWorkingFolder& operator=(const ThreadWorkingFolder&) = delete;
  ~ThreadWorkingFolder() {
    if (isEntered_) pthread_fchdir_np(-1);
  }

  explicit operator bool() const noexcept { return isEntered_; }

 private:
  bool isEntered_;
};

// The calls for entries of an open folder came with macOS 13 only; these take paths.
ErrorOrNil makeNode(int folder, const char* name, mode_t mode, dev_t device) {
  const ThreadWorkingFolder entered(folder);
  if (!entered) return errorFromErrno();
  const int result = S_ISFIFO(mode) ? mkfifo(name, mode & kAccessBits) : mknod(name, mode, device);
  if (result != 0) return errorFromErrno();
  return std::nullopt;
}

bool isEmptyFolder(int folder) {
  struct Closing {
    void operator()(DIR* stream) const noexcept { closedir(stream); }
  };
  FileDescriptor own(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, Closing> stream(own ? fdopendir(own.get()) : nullptr);
  if (!stream) return false;
  own.release();
  while (const auto* record = readdir(stream.get()))
    if (!isDotOrDotDot(record->d_name)) return false;
  return true;
}

// A new object is its maker's, or everything on the file system is one user's: then its folder is, too.
bool isOwnedAsNew(int folder, const FileStatus& status) {
  if (status.owner == geteuid()) return true;
  const auto parent = readFileStatus({folder});
  return parent && status.owner == parent->owner;
}

ErrorOrNil writeModeOfNewObject(const ObjectPlace& place, std::uint16_t permissions) {
  const auto error = writePermissions(place, permissions);
  // A file system that keeps no modes refuses.
  if (error && !error->isPosix(EPERM) && !error->isPosix(ENOTSUP) && !error->isPosix(EOPNOTSUPP)) return error;
  return std::nullopt;
}

// Nobody's mode is changed but that of what was just made: whoever may write to the folder may have put something else
// in its place meanwhile. Then the name is taken. A folder is held fast between check and change; what can't be held
// without opening it could be replaced between them by another object that looks as new.
ErrorOrNil finishCreation(int folder, const char* name, const FileStatus& made) {
  const bool isFolder = made.type == FileType::Directory;
  const FileDescriptor held(
      isFolder ? openat(folder, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC) : -1);
  const ObjectPlace place = held ? ObjectPlace{held.get()} : ObjectPlace{folder, name};
  const auto status = readFileStatus(place);
  if (!status) return status.error();
  if (status->type == made.type && status->permissions == made.permissions) return std::nullopt;
  const bool isOurs = status->type == made.type && status->specialDevice == made.specialDevice &&
                      isOwnedAsNew(folder, *status) &&
                      (isFolder ? !held || isEmptyFolder(held.get()) : status->links == 1);
  if (!isOurs) return Error::posix(posix::kExists);
  return writeModeOfNewObject(place, made.permissions);
}

}  // namespace

ErrorOrNil createFolder(int folder, const char* name, std::uint16_t permissions) {
  if (mkdirat(folder, name, permissions & kAccessBits) != 0) return errorFromErrno();
  return finishCreation(folder, name, {.type = FileType::Directory, .permissions = permissions});
}

// Nothing makes a whiteout any more.
ErrorOrNil createSpecialFile(int folder, const char* name, const FileStatus& like) {
  mode_t type = 0;
  switch (like.type) {
    case FileType::Fifo:
      type = S_IFIFO;
      break;
    case FileType::CharacterDevice:
      type = S_IFCHR;
      break;
    case FileType::BlockDevice:
      type = S_IFBLK;
      break;
    default:
      return Error::posix(posix::kNotSupported);
  }
  const auto device = like.type == FileType::Fifo ? 0 : like.specialDevice;
  if (auto error = makeNode(folder, name, type | (like.permissions & kAccessBits), static_cast<dev_t>(device)))
    return error;
  return finishCreation(folder, name, {.type = like.type, .permissions = like.permissions, .specialDevice = device});
}

ErrorOrNil renameWithoutReplacing(int folder, const char* name, int newFolder, const char* newName) {
  if (renameatx_np(folder, name, newFolder, newName, RENAME_EXCL) == 0) return std::nullopt;
  // Also the answer for a folder that would come to lie in itself, which the other way gives again.
  if (errno == EINVAL || errno == ENOTSUP || errno == EOPNOTSUPP)
    return renameAfterCheck(folder, name, newFolder, newName);
  return errorFromErrno();
}

}  // namespace vantrell::host
