// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/PosixStorageDevices.h"
#include "tests/host/StorageDevicesContract.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace tests;

struct LinuxDeviceCandidate final : StorageDevicesCandidate {
  tests::TemporaryFolder folder;
  host::PosixStorageDevices real;
  std::unique_ptr<tests::LoopDevice> loop =
      std::make_unique<tests::LoopDevice>(folder.makeFile("disk", std::string(8 * kBlock, kFilling)));
  host::StorageDevices& devices() override { return real; }
  std::string path() override { return loop->path(); }
  std::string content() override { return contentOf(loop->path()); }
};

TEST(LinuxStorageDevices, AFullDeviceIsAnError) {
  host::PosixStorageDevices devices;
  EXPECT_EQ(erase(devices, "/dev/full", 3), Error::posix(posix::kNoSpace));
}

struct LinuxStorageDevicesAsRoot : testing::Test {
  TemporaryFolder folder;
  host::PosixStorageDevices devices;
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "Only root can make devices and mount file systems.";
  }
};

/// Devices of this size, whose end lies within a large piece, at an odd number of blocks.
constexpr std::uint64_t kBlocks = (std::uint64_t{9} << 20) / kBlock + 5;

TEST_F(LinuxStorageDevicesAsRoot, CannotBeToldFromWritingSingleBlocks) {
  try {
    for (const std::uint64_t count :
         {std::uint64_t{1}, std::uint64_t{8193}, kBlocks - 1, kBlocks, kBlocks + 1, kBlocks * 3}) {
      const auto file = folder.makeFile("disk", std::string(kBlocks * kBlock, kFilling));
      const auto expectedFile = folder.makeFile("expected", std::string(kBlocks * kBlock, kFilling));
      const tests::LoopDevice loop(file);
      const tests::LoopDevice expected(expectedFile);
      EXPECT_EQ(erase(devices, loop.path(), count), writeSingleBlocks(expected.path(), count)) << count;
      const auto content = contentOf(loop.path());
      EXPECT_TRUE(content == contentOf(expected.path())) << count;
      EXPECT_TRUE(content == zerosThenFilling(std::min(count, kBlocks) * kBlock, kBlocks * kBlock)) << count;
    }
  } catch (const std::system_error& error) {
    GTEST_SKIP() << "There is no loop device to be had here: " << error.what();
  }
}

TEST_F(LinuxStorageDevicesAsRoot, DevicesWithLargerUnitsTakeAnyNumberOfBlocks) {
  constexpr std::uint64_t kLargeUnitBlocks = (std::uint64_t{5} << 20) / kBlock;
  try {
    for (const std::uint64_t count : {std::uint64_t{1}, std::uint64_t{8}, std::uint64_t{13}, kLargeUnitBlocks - 3,
                                      kLargeUnitBlocks, kLargeUnitBlocks + 1}) {
      const auto file = folder.makeFile("disk", std::string(kLargeUnitBlocks * kBlock, kFilling));
      const tests::LoopDevice loop(file, 4096);
      EXPECT_EQ(erase(devices, loop.path(), count),
                count > kLargeUnitBlocks ? ErrorOrNil(Error::posix(posix::kNoSpace)) : std::nullopt);
      EXPECT_TRUE(contentOf(loop.path()) ==
                  zerosThenFilling(std::min(count, kLargeUnitBlocks) * kBlock, kLargeUnitBlocks * kBlock))
          << count;
    }
  } catch (const std::system_error& error) {
    GTEST_SKIP() << "There is no loop device with such units to be had here: " << error.what();
  }
}

TEST_F(LinuxStorageDevicesAsRoot, AFullFileSystemEndsAFileWhereSingleBlocksWould) {
  folder.makeFolder("mount");
  const auto run = [&](const std::function<ErrorOrNil(const std::string&)>& write) {
    const tests::MountedFileSystem memory(folder.path("mount"));
    const auto path = folder.makeFile("mount/file", "");
    EXPECT_EQ(write(path), Error::posix(posix::kNoSpace));
    return contentOf(path);
  };
  constexpr std::uint64_t kTooMany = (std::uint64_t{32} << 20) / kBlock;
  const auto content = run([&](const std::string& path) { return erase(devices, path, kTooMany); });
  EXPECT_TRUE(content == run([](const std::string& path) { return writeSingleBlocks(path, kTooMany); }));
  EXPECT_TRUE(content == std::string(content.size(), '\0'));
  EXPECT_GT(content.size(), std::size_t{8} << 20);
}

TEST_F(LinuxStorageDevicesAsRoot, ADeviceThatFailsMidwayEndsThereWithItsError) {
  folder.makeFolder("mount");
  const tests::MountedFileSystem memory(folder.path("mount"));  // 16 MiB for a device that promises 64
  const auto file = folder.makeFile("mount/disk", std::string(std::size_t{1} << 20, kFilling));
  ASSERT_EQ(truncate(file.c_str(), off_t{64} << 20), 0);
  try {
    const tests::LoopDevice loop(file);
    const auto error = erase(devices, loop.path(), (std::uint64_t{64} << 20) / kBlock);
    ASSERT_TRUE(error);
    EXPECT_TRUE(error->isPosix(posix::kNoSpace) || error->isPosix(posix::kInputOutput)) << error->code();
    EXPECT_TRUE(contentOf(file, std::size_t{1} << 20) == std::string(std::size_t{1} << 20, '\0'));
  } catch (const std::system_error& error) {
    GTEST_SKIP() << "There is no loop device to be had here: " << error.what();
  }
}

TEST_F(LinuxStorageDevicesAsRoot, BlocksAreWrittenAndNotUnmapped) {
  const auto file = folder.makeFile("disk", std::string(std::size_t{4} << 20, kFilling));
  try {
    const tests::LoopDevice loop(file);
    EXPECT_EQ(erase(devices, loop.path(), (std::uint64_t{4} << 20) / kBlock), std::nullopt);
  } catch (const std::system_error& error) {
    GTEST_SKIP() << "There is no loop device to be had here: " << error.what();
  }
  const int descriptor = open(file.c_str(), O_RDONLY | O_CLOEXEC);
  fsync(descriptor);
  struct stat status {};
  ASSERT_EQ(fstat(descriptor, &status), 0);
  close(descriptor);
  EXPECT_GE(status.st_blocks * 512, off_t{4} << 20);
}

}  // namespace

std::vector<tests::StorageDevicesImplementation> tests::storageDevicesOfThisHost() {
  return {{"LinuxDevice", [] { return std::make_unique<LinuxDeviceCandidate>(); }, true}};
}

}  // namespace vantrell
