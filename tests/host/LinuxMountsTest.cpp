// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "host/linux/LinuxMounts.h"
#include "tests/host/MountsContract.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

class RealMounts final : public tests::WorldWithMount {
 public:
  explicit RealMounts(const std::string& mountPoint) : mounted_(mountPoint) {}
  host::Mounts& mounts() override { return mounts_; }

 private:
  tests::MountedFileSystem mounted_;
  host::LinuxMounts mounts_;
};

class LinuxMountsAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "mounting takes root";
    root_ = std::filesystem::canonical(folder_.path());
  }
  std::string makeFolder(const std::string& name) {
    folder_.makeFolder(name);
    return root_ + "/" + name;
  }
  std::string mountPointOf(const std::string& path) {
    const auto name = host::LinuxMounts().mountPointNameForPath(path);
    return name ? *name : "error " + std::to_string(name.error().code());
  }

  tests::TemporaryFolder folder_;
  std::string root_;
};

TEST_F(LinuxMountsAsRoot, NamesWithBlanksBackslashesAndLineBreaksAreTheirOwn) {
  for (const std::string name :
       {"My Volume", "tab\there", "line\nbreak", "back\\slash", "\\040", "#hash", "d\xff", "Zürich"}) {
    const auto path = makeFolder(name);
    const tests::MountedFileSystem mounted(path);
    EXPECT_EQ(mountPointOf(path), path);
  }
}

TEST_F(LinuxMountsAsRoot, UppermostOfStackedMountsCounts) {
  const auto path = makeFolder("volume");
  const tests::MountedFileSystem below(path);
  std::filesystem::create_directory(path + "/below");
  const tests::MountedFileSystem above(path);
  EXPECT_FALSE(std::filesystem::exists(path + "/below"));
  EXPECT_EQ(mountPointOf(path), path);
}

TEST_F(LinuxMountsAsRoot, FolderBoundToASecondPlaceIsAMountPointThere) {
  const auto original = makeFolder("original");
  makeFolder("original/inside");
  const auto second = makeFolder("second");
  const auto unmounted = mountPointOf(original);
  EXPECT_NE(unmounted, original);
  const tests::MountedFileSystem bound(second, original);
  EXPECT_EQ(mountPointOf(second), second);
  EXPECT_EQ(mountPointOf(second + "/inside"), second);
  EXPECT_EQ(mountPointOf(original), unmounted);
}

TEST_F(LinuxMountsAsRoot, MountWithinAMountIsItsOwn) {
  const auto outer = makeFolder("outer");
  const tests::MountedFileSystem outerMount(outer);
  const auto inner = makeFolder("outer/inner");
  const tests::MountedFileSystem innerMount(inner);
  EXPECT_EQ(mountPointOf(inner), inner);
  EXPECT_EQ(mountPointOf(outer), outer);
}

TEST_F(LinuxMountsAsRoot, MountThatTheTableDoesNotShowIsAnError) {
  for (const auto& table :
       {folder_.makeFile("empty", ""), folder_.makeFile("garbage", "x\n\n 1 2 3\n"), folder_.path("missing")}) {
    const auto name = host::LinuxMounts(table).mountPointNameForPath("/");
    ASSERT_FALSE(name);
    EXPECT_EQ(name.error(), Error::posix(2));
  }
}

}  // namespace

std::unique_ptr<tests::WorldWithMount> tests::realWorldWithMount(const std::string& mountPoint) {
  return std::make_unique<RealMounts>(mountPoint);
}

}  // namespace vantrell
