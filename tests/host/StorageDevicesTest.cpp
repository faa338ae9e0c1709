// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/PosixStorageDevices.h"
#include "tests/host/StorageDevicesContract.h"
#include "tests/support/FakeStorageDevices.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace tests;

struct FakeCandidate final : StorageDevicesCandidate {
  tests::FakeStorageDevices fake;
  FakeCandidate() { fake.devices["/dev/disk"] = {Data(8 * kBlock, static_cast<std::uint8_t>(kFilling))}; }
  host::StorageDevices& devices() override { return fake; }
  std::string path() override { return "/dev/disk"; }
  std::string content() override { return std::string(textOf(fake.devices["/dev/disk"].bytes)); }
};

struct FileCandidate final : StorageDevicesCandidate {
  tests::TemporaryFolder folder;
  host::PosixStorageDevices real;
  FileCandidate() { folder.makeFile("disk", std::string(8 * kBlock, kFilling)); }
  host::StorageDevices& devices() override { return real; }
  std::string path() override { return folder.path("disk"); }
  std::string content() override { return contentOf(folder.path("disk")); }
};

std::vector<StorageDevicesImplementation> implementations() {
  auto all = storageDevicesOfThisHost();
  all.push_back({"Fake", [] { return std::make_unique<FakeCandidate>(); }, true});
  all.push_back({"File", [] { return std::make_unique<FileCandidate>(); }, false});
  return all;
}

struct StorageDevicesContractAsRoot : testing::TestWithParam<StorageDevicesImplementation> {
  void SetUp() override {
    try {
      candidate = GetParam().make();
    } catch (const std::system_error& error) {
      GTEST_SKIP() << "There is no such device to be had here: " << error.what();
    }
  }
  std::unique_ptr<StorageDevicesCandidate> candidate;
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
  if (!GetParam().endsAfterEightBlocks) GTEST_SKIP() << "This one has no end, or another word for it.";
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

INSTANTIATE_TEST_SUITE_P(, StorageDevicesContractAsRoot, testing::ValuesIn(implementations()),
                         [](const auto& info) { return std::string(info.param.name); });

struct PosixStorageDevices : testing::Test {
  tests::TemporaryFolder folder;
  host::PosixStorageDevices devices;
};

TEST_F(PosixStorageDevices, ReportsWhatCannotBeOpened) {
  EXPECT_EQ(erase(devices, folder.path(), 1), Error::posix(posix::kIsDirectory));
  EXPECT_EQ(erase(devices, folder.makeFile("file") + "/x", 1), Error::posix(posix::kNotDirectory));
  EXPECT_EQ(erase(devices, folder.path(std::string(300, 'x')), 1), Error::posix(posix::kNameTooLong));
}

TEST_F(PosixStorageDevices, FollowsLinks) {
  const auto target = folder.makeFile("target", std::string(2 * kBlock, kFilling));
  EXPECT_EQ(erase(devices, folder.makeLink("link", "target"), 1), std::nullopt);
  EXPECT_EQ(contentOf(target), zerosThenFilling(kBlock, 2 * kBlock));
}

TEST_F(PosixStorageDevices, FilesGrowAsNeeded) {
  const auto path = folder.makeFile("file", "short");
  constexpr std::uint64_t kCount = (std::uint64_t{9} << 20) / kBlock + 3;  // pieces, and some single blocks
  EXPECT_EQ(erase(devices, path, kCount), std::nullopt);
  EXPECT_EQ(contentOf(path), std::string(kCount * kBlock, '\0'));
}

TEST_F(PosixStorageDevices, WhatHasNoPositionsGetsOneWriteABlock) {
  EXPECT_EQ(erase(devices, "/dev/null", 1000), std::nullopt);
  const auto path = folder.path("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::string received;
  std::thread reader([&] { received = contentOf(path); });
  EXPECT_EQ(erase(devices, path, 200), std::nullopt);
  reader.join();
  EXPECT_EQ(received, std::string(200 * kBlock, '\0'));
}

}  // namespace
}  // namespace vantrell
