// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixFileContents.h"

#include <algorithm>
#include <limits>
#include <new>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/DescriptorCalls.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {
namespace {

// Below this a copy is cheaper than a mapping with its page faults.
constexpr std::uint64_t kSmallestMapping = 64 << 10;
constexpr std::size_t kReadStep = 64 << 10;

class MappedFile final : public FileContents {
 public:
  MappedFile(void* start, std::size_t size) noexcept : start_(start), size_(size) {}
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;
  ~MappedFile() override { munmap(start_, size_); }

  DataView bytes() const noexcept override { return {static_cast<const std::uint8_t*>(start_), size_}; }

 private:
  void* start_;
  std::size_t size_;
};

class LoadedFile final : public FileContents {
 public:
  explicit LoadedFile(Data data) noexcept : data_(std::move(data)) {}
  DataView bytes() const noexcept override { return data_; }

 private:
  Data data_;
};

// Anyone else who could write could also shrink the file, and reading a mapping beyond the end kills the process.
bool isSafeToMap(int descriptor, const struct stat& status) {
  return (status.st_uid == 0 || status.st_uid == geteuid()) && !mayOthersWrite(descriptor, status);
}

// The size is a guess only: pseudo files say 0, and a file may grow or shrink meanwhile.
Result<Data> readToEnd(int descriptor, std::uint64_t expectedSize, std::uint64_t maximumSize) {
  Data data;
  data.resize(static_cast<std::size_t>(expectedSize) + 1);
  std::size_t used = 0;
  for (;;) {
    if (used == data.size()) data.resize(data.size() + std::max(kReadStep, data.size() / 2));
    const ssize_t count = read(descriptor, data.data() + used, data.size() - used);
    if (count < 0) {
      if (errno == EINTR) continue;
      return errnoFailure();
    }
    if (count == 0) break;
    used += static_cast<std::size_t>(count);
    if (used > maximumSize) return posixFailure(posix::kFileTooLarge);
  }
  data.resize(used);
  return data;
}

}  // namespace

Result<std::unique_ptr<FileContents>> loadPosixFile(const std::string& path, std::uint64_t maximumSize) {
  // Asked before opening, for a device may act on being opened; asked again after it, for the name may have changed
  // hands.
  struct stat status;
  if (stat(path.c_str(), &status) != 0) return errnoFailure();
  if (!S_ISREG(status.st_mode)) return posixFailure(posix::kInvalidArgument);
  const FileDescriptor file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) return errnoFailure();
  if (fstat(file.get(), &status) != 0) return errnoFailure();
  if (!S_ISREG(status.st_mode)) return posixFailure(posix::kInvalidArgument);

  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size > maximumSize || size >= std::numeric_limits<std::size_t>::max()) return posixFailure(posix::kFileTooLarge);
  if (size >= kSmallestMapping && isSafeToMap(file.get(), status)) {
    void* start = mmap(nullptr, static_cast<std::size_t>(size), PROT_READ, MAP_PRIVATE, file.get(), 0);
    if (start != MAP_FAILED) return std::make_unique<MappedFile>(start, static_cast<std::size_t>(size));
  }
  try {
    auto data = readToEnd(file.get(), size, maximumSize);
    if (!data) return failure(data.error());
    return std::make_unique<LoadedFile>(std::move(*data));
  } catch (const std::bad_alloc&) {
    return posixFailure(posix::kNoMemory);
  }
}

}  // namespace vantrell::host
