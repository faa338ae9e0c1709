// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/DescriptorCalls.h"

#include <fcntl.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/DescriptorPath.h"
#include "host/linux/FileStatusCalls.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kKernelStep = 1 << 30;

// Some file systems say that they can't, others that the files don't go together; kernels and sandboxes differ in the
// number.
bool saysNotPossible(int number) {
  return number == EXDEV || number == EINVAL || number == ENOSYS || number == EOPNOTSUPP || number == EPERM ||
         number == EBADF || number == ETXTBSY;
}

// `call` copies up to so many bytes and answers how many. Pseudo files can say that there is nothing where there is
// something, so an end is believed only behind something else.
template <class Call>
Result<KernelCopy> copyBy(const Call& call) {
  for (bool any = false;; any = true) {
    const ssize_t count = call(kKernelStep);
    if (count == 0) return any ? KernelCopy::Complete : KernelCopy::NotPossible;
    if (count > 0) continue;
    if (errno == EINTR) continue;
    if (saysNotPossible(errno)) return KernelCopy::NotPossible;
    return errnoFailure();
  }
}

}  // namespace

Result<FileStatus> statusOfDescriptor(int descriptor) {
  return readFileStatus(descriptor, "", AT_EMPTY_PATH);
}

Result<FileDescriptor> openRegularFile(int folder, const char* name) {
  // Pinned first: a device or a pipe may act on being opened.
  const FileDescriptor location(openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!location) return errnoFailure();
  const auto status = statusOfDescriptor(location.get());
  if (!status) return failure(status.error());
  if (status->isSymbolicLink()) return posixFailure(posix::kTooManyLinks);
  if (status->type != FileType::Regular) return posixFailure(posix::kInvalidArgument);
  FileDescriptor file(open(DescriptorPath(location.get()).get(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) return errnoFailure();
  return file;
}

ErrorOrNil synchronizeDescriptor(int descriptor) {
  if (fsync(descriptor) != 0) return errorFromErrno();
  return std::nullopt;
}

Result<KernelCopy> copyInKernel(int source, int target) {
  const auto copied =
      copyBy([&](std::size_t step) { return copy_file_range(source, nullptr, target, nullptr, step, 0); });
  if (!copied || *copied == KernelCopy::Complete) return copied;
  return copyBy([&](std::size_t step) { return sendfile(target, source, nullptr, step); });
}

// An access control list that lets others write shows in the group's bits.
bool mayOthersWrite(int, const struct stat& status) {
  return (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

}  // namespace vantrell::host
