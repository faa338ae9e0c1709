// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "host/StorageDevices.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::tests {

inline constexpr std::uint64_t kBlock = host::StorageDevice::kBlockSize;
inline constexpr char kFilling = '\xAA';

inline std::string contentOf(const std::string& path, std::size_t limit = std::string::npos) {
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  std::ifstream file(path, std::ios::binary);
  std::string content;
  while (file && content.size() < limit) {
    const auto size = content.size();
    content.resize(size + std::min(kPiece, limit - size));
    file.read(content.data() + size, static_cast<std::streamsize>(content.size() - size));
    content.resize(size + static_cast<std::size_t>(file.gcount()));
  }
  return content;
}

inline std::string zerosThenFilling(std::uint64_t zeros, std::uint64_t size) {
  return std::string(zeros, '\0') + std::string(size - zeros, kFilling);
}

/// What writing the blocks one by one comes to, the way that no large write takes part in.
inline ErrorOrNil writeSingleBlocks(const std::string& path, std::uint64_t count) {
  const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (file < 0) return host::errorFromErrno();
  const std::string zeros(kBlock, '\0');
  ErrorOrNil error;
  for (; count > 0 && !error; --count) {
    errno = ENOSPC;
    if (write(file, zeros.data(), zeros.size()) != static_cast<ssize_t>(zeros.size())) error = host::errorFromErrno();
  }
  close(file);
  return error;
}

inline ErrorOrNil erase(host::StorageDevices& devices, const std::string& path, std::uint64_t count) {
  auto device = devices.openForWriting(path);
  if (!device) return device.error();
  return (*device)->writeZeroBlocks(count);
}

/// One device of 8 blocks.
struct StorageDevicesCandidate {
  virtual ~StorageDevicesCandidate() = default;
  virtual host::StorageDevices& devices() = 0;
  virtual std::string path() = 0;
  virtual std::string content() = 0;
};

struct StorageDevicesImplementation {
  const char* name;
  std::function<std::unique_ptr<StorageDevicesCandidate>()> make;  // throws std::system_error where there is none
  bool endsAfterEightBlocks;                                       // and says POSIX error 28 there
  friend void PrintTo(const StorageDevicesImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

/// This host's implementations with real devices: each host's tests define this.
std::vector<StorageDevicesImplementation> storageDevicesOfThisHost();

}  // namespace vantrell::tests
