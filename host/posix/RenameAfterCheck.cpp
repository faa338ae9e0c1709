// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/RenameAfterCheck.h"

#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

ErrorOrNil moveByLink(int folder, const char* name, int newFolder, const char* newName) {
  if (linkat(folder, name, newFolder, newName, 0) != 0) return errorFromErrno();
  if (unlinkat(folder, name, 0) == 0) return std::nullopt;
  const Error error = errorFromErrno();
  unlinkat(newFolder, newName, 0);
  return error;
}

}  // namespace

ErrorOrNil renameAfterCheck(int folder, const char* name, int newFolder, const char* newName) {
  struct stat status;
  if (fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return errorFromErrno();
  if (!S_ISDIR(status.st_mode)) {
    const auto error = moveByLink(folder, name, newFolder, newName);
    if (!error || error->isPosix(posix::kExists) || error->isPosix(posix::kCrossDevice)) return error;
  }
  if (fstatat(newFolder, newName, &status, AT_SYMLINK_NOFOLLOW) == 0) return Error::posix(posix::kExists);
  if (errno != ENOENT) return errorFromErrno();
  if (renameat(folder, name, newFolder, newName) != 0) return errorFromErrno();
  return std::nullopt;
}

}  // namespace vantrell::host
