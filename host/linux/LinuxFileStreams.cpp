// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxFileStreams.h"

#include <array>

#include <fcntl.h>
#include <sys/sendfile.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/DescriptorPath.h"
#include "host/posix/ErrorNumbers.h"
#include "host/linux/FileStatusCalls.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kKernelStep = 1 << 30;
constexpr std::size_t kBufferSize = 128 << 10;

enum class KernelCopy { Complete, NotPossible };

// Some file systems say that they can't, others that the files don't go together; kernels and sandboxes differ in the
// number. What is copied by then has moved both files' positions, so that another way goes on from there.
bool saysNotPossible(int number) {
  return number == EXDEV || number == EINVAL || number == ENOSYS || number == EOPNOTSUPP || number == EPERM ||
         number == EBADF || number == ETXTBSY;
}

// `call` copies up to so many bytes and answers how many. Pseudo files can say that there is nothing where there is
// something, so an end is believed only behind something else.
template <class Call>
Result<KernelCopy> copyInKernel(const Call& call) {
  for (bool any = false;; any = true) {
    const ssize_t count = call(kKernelStep);
    if (count == 0) return any ? KernelCopy::Complete : KernelCopy::NotPossible;
    if (count > 0) continue;
    if (errno == EINTR) continue;
    if (saysNotPossible(errno)) return KernelCopy::NotPossible;
    return errnoFailure();
  }
}

Result<KernelCopy> copyDescriptors(int source, int target) {
  const auto copied =
      copyInKernel([&](std::size_t step) { return copy_file_range(source, nullptr, target, nullptr, step, 0); });
  if (!copied || *copied == KernelCopy::Complete) return copied;
  return copyInKernel([&](std::size_t step) { return sendfile(target, source, nullptr, step); });
}

}  // namespace

Result<FileStatus> LinuxFileReader::status() const {
  return readFileStatus(file_.get(), "", AT_EMPTY_PATH);
}

Result<std::size_t> LinuxFileReader::read(std::span<std::uint8_t> buffer) {
  for (;;) {
    const ssize_t count = ::read(file_.get(), buffer.data(), buffer.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) return errnoFailure();
  }
}

Result<FileStatus> LinuxFileWriter::status() const {
  return readFileStatus(file_.get(), "", AT_EMPTY_PATH);
}

ErrorOrNil LinuxFileWriter::write(DataView bytes) {
  while (!bytes.empty()) {
    const ssize_t count = ::write(file_.get(), bytes.data(), bytes.size());
    if (count == 0) return Error::posix(posix::kInputOutput);
    if (count > 0)
      bytes = bytes.subspan(static_cast<std::size_t>(count));
    else if (errno != EINTR)
      return errorFromErrno();
  }
  return std::nullopt;
}

ErrorOrNil LinuxFileWriter::copyFrom(FileReader& source) {
  if (const auto* file = dynamic_cast<const LinuxFileReader*>(&source)) {
    const auto copied = copyDescriptors(file->descriptor(), file_.get());
    if (!copied) return copied.error();
    if (*copied == KernelCopy::Complete) return std::nullopt;
  }
  const auto buffer = std::make_unique_for_overwrite<std::array<std::uint8_t, kBufferSize>>();
  for (;;) {
    const auto count = source.read(*buffer);
    if (!count) return count.error();
    if (*count == 0) return std::nullopt;
    if (auto error = write(DataView(buffer->data(), *count))) return error;
  }
}

ErrorOrNil LinuxFileWriter::synchronize() {
  if (fsync(file_.get()) != 0) return errorFromErrno();
  return std::nullopt;
}

Result<std::unique_ptr<FileReader>> openRegularFile(int folder, const char* name) {
  // Pinned first: a device or a pipe may act on being opened.
  const FileDescriptor location(openat(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC));
  if (!location) return errnoFailure();
  const auto status = readFileStatus(location.get(), "", AT_EMPTY_PATH);
  if (!status) return failure(status.error());
  if (status->isSymbolicLink()) return posixFailure(posix::kTooManyLinks);
  if (status->type != FileType::Regular) return posixFailure(posix::kInvalidArgument);
  FileDescriptor file(open(DescriptorPath(location.get()).get(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) return errnoFailure();
  return std::make_unique<LinuxFileReader>(std::move(file));
}

}  // namespace vantrell::host
