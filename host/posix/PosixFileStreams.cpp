// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixFileStreams.h"

#include <array>
#include <memory>

#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/DescriptorCalls.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kBufferSize = 128 << 10;

}  // namespace

Result<FileStatus> PosixFileReader::status() const {
  return statusOfDescriptor(file_.get());
}

Result<std::size_t> PosixFileReader::read(std::span<std::uint8_t> buffer) {
  for (;;) {
    const ssize_t count = ::read(file_.get(), buffer.data(), buffer.size());
    if (count >= 0) return static_cast<std::size_t>(count);
    if (errno != EINTR) return errnoFailure();
  }
}

Result<FileStatus> PosixFileWriter::status() const {
  return statusOfDescriptor(file_.get());
}

ErrorOrNil PosixFileWriter::write(DataView bytes) {
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

ErrorOrNil PosixFileWriter::copyFrom(FileReader& source) {
  if (const auto* file = dynamic_cast<const PosixFileReader*>(&source)) {
    const auto copied = copyInKernel(file->descriptor(), file_.get());
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

ErrorOrNil PosixFileWriter::synchronize() {
  return synchronizeDescriptor(file_.get());
}

}  // namespace vantrell::host
