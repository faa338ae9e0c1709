// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/posix/FileDescriptor.h"
#include "host/posix/PosixStorageDevices.h"
#include "tests/host/StorageDevicesContract.h"
#include "tests/macos/RamDisk.h"

namespace vantrell::tests {
namespace {

// A raw disk takes and gives whole blocks only, whatever a library's streams would ask for.
constexpr std::size_t kPieceOfDevice = std::size_t{1} << 20;

void fill(const std::string& path, std::uint64_t size) {
  const host::FileDescriptor device(open(path.c_str(), O_WRONLY | O_CLOEXEC));
  const std::string piece(kPieceOfDevice, kFilling);
  while (size > 0) {
    const auto count = std::min<std::uint64_t>(size, piece.size());
    if (write(device.get(), piece.data(), count) != static_cast<ssize_t>(count))
      throw std::system_error(errno, std::system_category(), path);
    size -= count;
  }
}

std::string contentOfDevice(const std::string& path) {
  const host::FileDescriptor device(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::string content;
  std::string piece(kPieceOfDevice, 0);
  for (ssize_t count = 0; (count = read(device.get(), piece.data(), piece.size())) > 0;)
    content.append(piece, 0, static_cast<std::size_t>(count));
  return content;
}

struct DeviceCandidate final : StorageDevicesCandidate {
  RamDisk disk{8};
  host::PosixStorageDevices real;
  DeviceCandidate() { fill(disk.path(), 8 * kBlock); }
  host::StorageDevices& devices() override { return real; }
  std::string path() override { return disk.path(); }
  std::string content() override { return contentOfDevice(disk.path()); }
};

class MacStorageDevicesAsRoot : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may write to disks";
  }
  static std::string pathOf(const RamDisk& disk) { return GetParam() ? disk.rawPath() : disk.path(); }

  host::PosixStorageDevices devices_;
};

/// Disks of this size, whose end lies within a large piece, at an odd number of blocks.
constexpr std::uint64_t kBlocks = (std::uint64_t{9} << 20) / kBlock + 5;

TEST_P(MacStorageDevicesAsRoot, CannotBeToldFromWritingSingleBlocks) {
  try {
    for (const std::uint64_t count : {std::uint64_t{1}, std::uint64_t{8193}, kBlocks - 1, kBlocks, kBlocks + 1}) {
      const RamDisk disk(kBlocks);
      const RamDisk expected(kBlocks);
      fill(pathOf(disk), kBlocks * kBlock);
      fill(pathOf(expected), kBlocks * kBlock);
      EXPECT_EQ(erase(devices_, pathOf(disk), count), writeSingleBlocks(pathOf(expected), count)) << count;
      const auto content = contentOfDevice(pathOf(disk));
      EXPECT_TRUE(content == contentOfDevice(pathOf(expected))) << count;
      EXPECT_TRUE(content == zerosThenFilling(std::min(count, kBlocks) * kBlock, kBlocks * kBlock)) << count;
    }
  } catch (const std::system_error& error) {
    GTEST_SKIP() << "There is no such disk to be had here: " << error.what();
  }
}

INSTANTIATE_TEST_SUITE_P(, MacStorageDevicesAsRoot, testing::Bool(),
                         [](const auto& info) { return info.param ? "RawDisk" : "Disk"; });

}  // namespace

// What a disk says at its end is the driver's affair.
std::vector<StorageDevicesImplementation> storageDevicesOfThisHost() {
  return {{"MacDevice", [] { return std::make_unique<DeviceCandidate>(); }, false}};
}

}  // namespace vantrell::tests
