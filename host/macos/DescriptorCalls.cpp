// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/DescriptorCalls.h"

#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/AccessControlCalls.h"
#include "host/macos/FileStatusCalls.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

Result<FileStatus> statusOfDescriptor(int descriptor) {
  return readFileStatus({descriptor});
}

// Asked before opening, for a device or a pipe may act on being opened; asked again after it, for the name may have
// changed hands. Nobody but root can have put a device there; a pipe doesn't block.
Result<FileDescriptor> openRegularFile(int folder, const char* name) {
  const auto status = readFileStatus({folder, name});
  if (!status) return failure(status.error());
  if (status->isSymbolicLink()) return posixFailure(posix::kTooManyLinks);
  if (status->type != FileType::Regular) return posixFailure(posix::kInvalidArgument);
  FileDescriptor file(openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) return errnoFailure();
  const auto opened = readFileStatus({file.get()});
  if (!opened) return failure(opened.error());
  if (opened->type != FileType::Regular) return posixFailure(posix::kInvalidArgument);
  return file;
}

// fsync(2) only hands the content to the device, which may keep it to itself for a while.
ErrorOrNil synchronizeDescriptor(int descriptor) {
  if (fcntl(descriptor, F_FULLFSYNC) == 0) return std::nullopt;
  if (errno != ENOTSUP && errno != EOPNOTSUPP && errno != EINVAL && errno != ENOTTY) return errorFromErrno();
  if (fsync(descriptor) != 0) return errorFromErrno();
  return std::nullopt;
}

// The C library's copying of open files takes them from their starts and cuts the target to what it copied; the kernel
// clones into new files only.
Result<KernelCopy> copyInKernel(int, int) {
  return KernelCopy::NotPossible;
}

bool mayOthersWrite(int descriptor, const struct stat& status) {
  if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0) return true;
  const auto list = readAccessControlList({descriptor});
  return !list || *list;
}

}  // namespace vantrell::host
