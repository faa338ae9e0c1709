// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/linux/LinuxStorageDevices.h"
#include "tests/support/FakeStorageDevices.h"
#include "tests/support/LoopDevice.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

constexpr std::uint64_t kBlock = host::StorageDevice::kBlockSize;
constexpr char kFilling = '\xAA';

std::string contentOf(const std::string& path, std::size_t limit = std::string::npos) {
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

std::string zerosThenFilling(std::uint64_t zeros, std::uint64_t size) {
  return std::string(zeros, '\0') + std::string(size - zeros, kFilling);
}

/// What writing the blocks one by one comes to, the way that no large write takes part in.
ErrorOrNil writeSingleBlocks(const std::string& path, std::uint64_t count) {
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

ErrorOrNil erase(host::StorageDevices& devices, const std::string& path, std::uint64_t count) {
  auto device = devices.openForWriting(path);
  if (!device) return device.error();
  return (*device)->writeZeroBlocks(count);
}

/// One device of 8 blocks.
struct Candidate {
  virtual ~Candidate() = default;
  virtual host::StorageDevices& devices() = 0;
  virtual std::string path() = 0;
  virtual std::string content() = 0;
};

struct FakeCandidate final : Candidate {
  tests::FakeStorageDevices fake;
  FakeCandidate() { fake.devices["/dev/disk"] = {Data(8 * kBlock, static_cast<std::uint8_t>(kFilling))}; }
  host::StorageDevices& devices() override { return fake; }
  std::string path() override { return "/dev/disk"; }
  std::string content() override { return std::string(textOf(fake.devices["/dev/disk"].bytes)); }
};

struct LinuxFileCandidate final : Candidate {
  tests::TemporaryFolder folder;
  host::LinuxStorageDevices real;
  LinuxFileCandidate() { folder.makeFile("disk", std::string(8 * kBlock, kFilling)); }
  host::StorageDevices& devices() override { return real; }
  std::string path() override { return folder.path("disk"); }
  std::string content() override { return contentOf(folder.path("disk")); }
};

struct LinuxDeviceCandidate final : Candidate {
  tests::TemporaryFolder folder;
  host::LinuxStorageDevices real;
  std::unique_ptr<tests::LoopDevice> loop =
      std::make_unique<tests::LoopDevice>(folder.makeFile("disk", std::string(8 * kBlock, kFilling)));
  host::StorageDevices& devices() override { return real; }
  std::string path() override { return loop->path(); }
  std::string content() override { return contentOf(loop->path()); }
};

struct Implementation {
  const char* name;
  std::function<std::unique_ptr<Candidate>()> make;
  bool endsAfterEightBlocks;
  friend void PrintTo(const Implementation& implementation, std::ostream* stream) { *stream << implementation.name; }
};

struct StorageDevicesContractAsRoot : testing::TestWithParam<Implementation> {
  void SetUp() override {
    try {
      candidate = GetParam().make();
    } catch (const std::system_error& error) {
      GTEST_SKIP() << "There is no loop device to be had here: " << error.what();
    }
  }
  std::unique_ptr<Candidate> candidate;
};

TEST_P(StorageDevicesContractAsRoot, WritesZerosFromTheStartAndNothingBehind) {
  for (const std::uint64_t count : {0u, 1u, 3u, 7u, 8u}) {
    candidate.reset();
    candidate = GetParam().make();
    EXPECT_EQ(erase(candidate->devices(), candidate->path(), count), std::nullopt);
    EXPECT_EQ(candidate->content(), zerosThenFilling(count * kBlock, 8 * kBlock)) << count;
  }
}

TEST_P(StorageDevicesContractAsRoot, EndsWithTheDevice) {
  if (!GetParam().endsAfterEightBlocks) GTEST_SKIP() << "A file has no end of its own.";
  for (const std::uint64_t count : {std::uint64_t{9}, std::uint64_t{1000}, ~std::uint64_t{0}}) {
    EXPECT_EQ(erase(candidate->devices(), candidate->path(), count), Error::posix(posix::kNoSpace));
    EXPECT_EQ(candidate->content(), std::string(8 * kBlock, '\0'));
  }
}

TEST_P(StorageDevicesContractAsRoot, OpensNothingThatIsNotThere) {
  EXPECT_EQ(erase(candidate->devices(), candidate->path() + "-missing", 1), Error::posix(posix::kNoEntry));
  EXPECT_EQ(erase(candidate->devices(), candidate->path() + std::string("\0x", 2), 1),
            Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(candidate->content(), std::string(8 * kBlock, kFilling));
}

INSTANTIATE_TEST_SUITE_P(
    , StorageDevicesContractAsRoot,
    testing::Values(Implementation{"Fake", [] { return std::make_unique<FakeCandidate>(); }, true},
                    Implementation{"LinuxFile", [] { return std::make_unique<LinuxFileCandidate>(); }, false},
                    Implementation{"LinuxDevice", [] { return std::make_unique<LinuxDeviceCandidate>(); }, true}),
    [](const auto& info) { return std::string(info.param.name); });

struct LinuxStorageDevices : testing::Test {
  tests::TemporaryFolder folder;
  host::LinuxStorageDevices devices;
};

TEST_F(LinuxStorageDevices, ReportsWhatCannotBeOpened) {
  EXPECT_EQ(erase(devices, folder.path(), 1), Error::posix(posix::kIsDirectory));
  EXPECT_EQ(erase(devices, folder.makeFile("file") + "/x", 1), Error::posix(posix::kNotDirectory));
  EXPECT_EQ(erase(devices, folder.path(std::string(300, 'x')), 1), Error::posix(posix::kNameTooLong));
}

TEST_F(LinuxStorageDevices, FollowsLinks) {
  const auto target = folder.makeFile("target", std::string(2 * kBlock, kFilling));
  EXPECT_EQ(erase(devices, folder.makeLink("link", "target"), 1), std::nullopt);
  EXPECT_EQ(contentOf(target), zerosThenFilling(kBlock, 2 * kBlock));
}

TEST_F(LinuxStorageDevices, FilesGrowAsNeeded) {
  const auto path = folder.makeFile("file", "short");
  constexpr std::uint64_t kCount = (std::uint64_t{9} << 20) / kBlock + 3;  // pieces, and some single blocks
  EXPECT_EQ(erase(devices, path, kCount), std::nullopt);
  EXPECT_EQ(contentOf(path), std::string(kCount * kBlock, '\0'));
}

TEST_F(LinuxStorageDevices, DevicesWithoutPositionsGetOneWriteABlock) {
  EXPECT_EQ(erase(devices, "/dev/full", 3), Error::posix(posix::kNoSpace));
  EXPECT_EQ(erase(devices, "/dev/null", 1000), std::nullopt);
  const auto path = folder.path("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::string received;
  std::jthread reader([&] { received = contentOf(path); });
  EXPECT_EQ(erase(devices, path, 200), std::nullopt);
  reader.join();
  EXPECT_EQ(received, std::string(200 * kBlock, '\0'));
}

struct LinuxStorageDevicesAsRoot : LinuxStorageDevices {
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
}  // namespace vantrell
