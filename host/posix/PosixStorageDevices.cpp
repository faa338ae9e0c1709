// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixStorageDevices.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/UncachedWriting.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kBlock = StorageDevice::kBlockSize;
constexpr std::size_t kPiece = std::size_t{4} << 20;

/// Zero bytes, aligned to a page. Never written to, they are one page of the kernel's many times over where it has such
/// a page: then they cost no memory, and reading them stays in the processor's cache.
class ZeroBytes {
 public:
  ZeroBytes() : at_(mmap(nullptr, kPiece, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
  ZeroBytes(const ZeroBytes&) = delete;
  ZeroBytes& operator=(const ZeroBytes&) = delete;
  ~ZeroBytes() {
    if (*this) munmap(at_, kPiece);
  }

  explicit operator bool() const noexcept { return at_ != MAP_FAILED; }
  const void* data() const noexcept { return at_; }

 private:
  void* at_;
};

/// What a write of a block that did not write all of it means.
Error errorOfIncompleteWrite(ssize_t count) {
  return count < 0 ? errorFromErrno() : Error::posix(posix::kNoSpace);
}

/// One write a block, wherever the object itself puts it.
class StreamDevice final : public StorageDevice {
 public:
  explicit StreamDevice(FileDescriptor file) : file_(std::move(file)) {}

  ErrorOrNil writeZeroBlocks(std::uint64_t count) override {
    constexpr std::array<char, kBlock> kZeros{};
    for (; count > 0; --count) {
      const auto written = write(file_.get(), kZeros.data(), kZeros.size());
      if (written != static_cast<ssize_t>(kBlock)) return errorOfIncompleteWrite(written);
    }
    return std::nullopt;
  }

 private:
  FileDescriptor file_;
};

/// What has positions: disks and regular files. Large pieces as long as all goes well; where one does not,
/// single blocks find out which of its blocks is the last that can be written.
class ExtentDevice final : public StorageDevice {
 public:
  /// `unit` is what positions and sizes of a write must be multiples of, as long as it goes past the cache; 0 where it
  /// doesn't.
  ExtentDevice(FileDescriptor file, std::uint64_t unit) : file_(std::move(file)), unit_(unit) {}

  ErrorOrNil writeZeroBlocks(std::uint64_t count) override {
    const ZeroBytes zeros;
    if (!zeros) return errorFromErrno();
    const auto reachable = std::min(count, kLastPosition / kBlock);
    const auto end = reachable * kBlock;
    for (std::uint64_t position = 0; position < end;) {
      position = writeLargePieces(zeros, position, end);
      const auto endOfPiece = std::min<std::uint64_t>(end, position + kPiece);
      if (position < end && unit_ > kBlock) writeThroughTheCache();  // such devices take no single blocks
      for (; position < endOfPiece; position += kBlock) {
        const auto written = writeAt(position, zeros, kBlock);
        if (written != static_cast<ssize_t>(kBlock)) return errorOfIncompleteWrite(written);
      }
    }
    if (reachable < count) return Error::posix(posix::kFileTooLarge);
    return std::nullopt;
  }

 private:
  static constexpr auto kLastPosition = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());

  bool writeThroughTheCache() {
    if (!endUncachedWriting(file_.get())) return false;
    unit_ = 0;
    return true;
  }

  ssize_t writeAt(std::uint64_t position, const ZeroBytes& zeros, std::size_t size) const {
    return pwrite(file_.get(), zeros.data(), size, static_cast<off_t>(position));
  }

  /// Up to the first piece that gives trouble, or that is no whole number of units. What comes back is where the first
  /// block begins that is not known to be written.
  std::uint64_t writeLargePieces(const ZeroBytes& zeros, std::uint64_t position, std::uint64_t end) {
    for (;;) {
      const auto left = end - position;
      const auto size = std::min<std::uint64_t>(kPiece, left - left % std::max<std::uint64_t>(unit_, kBlock));
      if (size == 0) return position;
      const auto written = writeAt(position, zeros, size);
      // A driver may promise more than it keeps.
      if (written < 0 && errno == EINVAL && unit_ != 0 && writeThroughTheCache()) continue;
      if (written != static_cast<ssize_t>(size))
        return position + (written > 0 ? static_cast<std::uint64_t>(written) / kBlock * kBlock : 0);
      position += size;
    }
  }

  FileDescriptor file_;
  std::uint64_t unit_;
};

}  // namespace

Result<std::unique_ptr<StorageDevice>> PosixStorageDevices::openForWriting(const std::string& path) {
  if (path.contains('\0')) return posixFailure(posix::kInvalidArgument);
  FileDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
  if (!file) return errnoFailure();
  struct stat status;
  if (fstat(file.get(), &status) != 0) return errnoFailure();
  if (S_ISREG(status.st_mode)) return std::make_unique<ExtentDevice>(std::move(file), 0);
  if (isDisk(file.get(), status.st_mode)) {
    const auto unit = beginUncachedWriting(file.get(), kPiece);
    return std::make_unique<ExtentDevice>(std::move(file), unit);
  }
  return std::make_unique<StreamDevice>(std::move(file));
}

}  // namespace vantrell::host
