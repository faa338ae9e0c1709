// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/FileCreationCalls.h"

#include <cstdio>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/FileChangeCalls.h"
#include "host/linux/FileStatusCalls.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/RenameAfterCheck.h"

namespace vantrell::host {
namespace {

constexpr unsigned kAccessBits = 0777;

bool isEmptyFolder(int location) {
  const FileDescriptor folder(openat(location, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  alignas(dirent64) char records[512];
  ssize_t count = 0;
  while (folder && (count = getdents64(folder.get(), records, sizeof records)) > 0) {
    for (ssize_t offset = 0; offset < count;) {
      const auto* record = reinterpret_cast<const dirent64*>(records + offset);
      if (!isDotOrDotDot(record->d_name)) return false;
      offset += record->d_reclen;
    }
  }
  return folder && count == 0;
}

// A new object is its maker's, or everything on the file system is one user's: then its folder is, too.
bool isOwnedAsNew(int folder, const FileStatus& status) {
  if (status.owner == geteuid()) return true;
  const auto parent = readFileStatus(folder, "", AT_EMPTY_PATH);
  return parent && status.owner == parent->owner;
}

// Nobody's mode is changed but that of what was just made: whoever may write to the folder may have put something else
// in its place meanwhile. Then the name is taken.
ErrorOrNil finishCreation(int folder, const char* name, FileType type, std::uint64_t device,
                          std::uint16_t permissions) {
  const FileDescriptor location(openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!location) return errorFromErrno();
  const auto status = readFileStatus(location.get(), "", AT_EMPTY_PATH);
  if (!status) return status.error();
  if (status->type == type && status->permissions == permissions) return std::nullopt;
  const bool isOurs = status->type == type && status->specialDevice == device && isOwnedAsNew(folder, *status) &&
                      (type == FileType::Directory ? isEmptyFolder(location.get()) : status->links == 1);
  if (!isOurs) return Error::posix(posix::kExists);
  return writeModeOfNewObject(location.get(), permissions);
}

}  // namespace

ErrorOrNil createFolder(int folder, const char* name, std::uint16_t permissions) {
  if (mkdirat(folder, name, permissions & kAccessBits) != 0) return errorFromErrno();
  return finishCreation(folder, name, FileType::Directory, 0, permissions);
}

ErrorOrNil createSpecialFile(int folder, const char* name, const FileStatus& like) {
  mode_t type = 0;
  switch (like.type) {
    case FileType::Fifo:
      type = S_IFIFO;
      break;
    case FileType::CharacterDevice:
    case FileType::Whiteout:
      type = S_IFCHR;
      break;
    case FileType::BlockDevice:
      type = S_IFBLK;
      break;
    default:
      return Error::posix(posix::kNotSupported);
  }
  const bool isDevice = like.type == FileType::CharacterDevice || like.type == FileType::BlockDevice;
  const dev_t device = isDevice ? like.specialDevice : makedev(0, 0);
  if (mknodat(folder, name, type | (like.permissions & kAccessBits), device) != 0) return errorFromErrno();
  return finishCreation(folder, name, like.type, device, like.permissions);
}

ErrorOrNil renameWithoutReplacing(int folder, const char* name, int newFolder, const char* newName) {
  if (renameat2(folder, name, newFolder, newName, RENAME_NOREPLACE) == 0) return std::nullopt;
  // Also the answer for a folder that would come to lie in itself, which the other way gives again.
  if (errno == EINVAL || errno == ENOSYS) return renameAfterCheck(folder, name, newFolder, newName);
  return errorFromErrno();
}

}  // namespace vantrell::host
