// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Setting and clearing the user-immutable flag, of one object and of trees.

#include <string>

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>

#include "tests/fileops/AdvancedOpsFixture.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"

namespace vantrell {
namespace {

using namespace tests;
namespace file_flags = host::file_flags;
constexpr auto kImmutable = file_flags::kUserImmutable;

class ImmutableFlag : public OverlayFixture {
 protected:
  ErrorOrNil set(bool value, const std::string& name, bool checking = true) {
    return ops_->setImmutableFlag(value, folder_.path(name), checking);
  }
  ErrorOrNil setRecursively(const std::string& name, bool value, bool stay = false) {
    return ops_->setUserImmutableAtPath(folder_.path(name), value, true, stay);
  }
  AdvancedOps ops_{fileSystem_, lists_};
};

TEST_F(ImmutableFlag, ChangesThatFlagOnly) {
  folder_.makeFile("file");
  force("file", file_flags::kUserNoDump | file_flags::kUserAppend);
  EXPECT_FALSE(set(true, "file"));
  EXPECT_EQ(flagsOf("file"), file_flags::kUserNoDump | file_flags::kUserAppend | kImmutable);
  EXPECT_FALSE(set(false, "file"));
  EXPECT_EQ(flagsOf("file"), file_flags::kUserNoDump | file_flags::kUserAppend);
}

TEST_F(ImmutableFlag, CostsNothingWhereItIsAsItShouldBe) {
  folder_.makeFile("file");
  EXPECT_FALSE(set(false, "file"));
  EXPECT_FALSE(set(true, "file"));
  EXPECT_FALSE(set(true, "file"));
  EXPECT_EQ(fileSystem_.flagChanges(), 1U);
}

TEST_F(ImmutableFlag, OfALinkIsThatOfTheTarget) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  EXPECT_FALSE(set(true, "link"));
  EXPECT_EQ(flagsOf("file"), kImmutable);
  EXPECT_EQ(flagsOf("link"), 0U);
}

TEST_F(ImmutableFlag, NeedsALinksTargetOnlyWhenAsked) {
  folder_.makeLink("dangling", "nowhere");
  EXPECT_EQ(set(true, "dangling", true), Error::posix(posix::kNoEntry));
  EXPECT_EQ(set(false, "dangling", true), Error::posix(posix::kNoEntry));
  EXPECT_FALSE(set(true, "dangling", false));
  EXPECT_FALSE(set(false, "dangling", false));
}

TEST_F(ImmutableFlag, ReportsMissingObjectsAndEmptyPaths) {
  EXPECT_EQ(set(true, "missing"), Error::posix(posix::kNoEntry));
  EXPECT_EQ(set(true, "missing", false), Error::posix(posix::kNoEntry));
  EXPECT_EQ(ops_->setImmutableFlag(true, "", true), Error::posix(posix::kInvalidArgument));
}

TEST_F(ImmutableFlag, MayBeUnsupportedOnlyWhenCleared) {
  folder_.makeFile("file");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(set(true, "pipe"), Error::posix(posix::kNotSupported));
  EXPECT_FALSE(set(false, "pipe"));
  force("file", kImmutable);
  fileSystem_.failFlagChanges(Error::posix(posix::kNotSupported));
  EXPECT_FALSE(set(false, "file"));
  fileSystem_.failFlagChanges(Error::posix(posix::kNotPermitted));
  EXPECT_EQ(set(false, "file"), Error::posix(posix::kNotPermitted));
}

TEST_F(ImmutableFlag, OfATreeNeedsSomethingThere) {
  folder_.makeLink("dangling", "nowhere");
  EXPECT_EQ(ops_->setUserImmutableAtPath("", true, true, false), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(setRecursively("missing", true), Error::posix(posix::kNoEntry));
  EXPECT_EQ(setRecursively("dangling", true), Error::posix(posix::kNoEntry));
}

TEST_F(ImmutableFlag, StopsAtTheTopUnlessRecursive) {
  folder_.makeFolder("folder/inner");
  EXPECT_FALSE(ops_->setUserImmutableAtPath(folder_.path("folder"), true, false, false));
  EXPECT_EQ(flagsOf("folder"), kImmutable);
  EXPECT_EQ(flagsOf("folder/inner"), 0U);
}

TEST_F(ImmutableFlag, IsSetAndClearedThroughATree) {
  folder_.makeFolder("folder/a/b");
  folder_.makeFile("folder/a/b/file");
  folder_.makeFile("folder/.hidden");
  const auto names = {"folder", "folder/a", "folder/a/b", "folder/a/b/file", "folder/.hidden"};
  EXPECT_FALSE(setRecursively("folder", true));
  for (const char* name : names) EXPECT_EQ(flagsOf(name), kImmutable) << name;
  EXPECT_FALSE(setRecursively("folder", false));
  for (const char* name : names) EXPECT_EQ(flagsOf(name), 0U) << name;
}

TEST_F(ImmutableFlag, OfAFileIsNeverRecursive) {
  folder_.makeFile("file");
  EXPECT_FALSE(setRecursively("file", true));
  EXPECT_EQ(flagsOf("file"), kImmutable);
}

TEST_F(ImmutableFlag, ALinkToAFolderCountsAsThatFolder) {
  folder_.makeFolder("target");
  folder_.makeFile("target/file");
  folder_.makeLink("link", "target");
  EXPECT_FALSE(setRecursively("link", true));
  EXPECT_EQ(flagsOf("target"), kImmutable);
  EXPECT_EQ(flagsOf("target/file"), kImmutable);
}

TEST_F(ImmutableFlag, ReachesTheTargetsOfLinksInsideButNotTheirContents) {
  folder_.makeFolder("target");
  folder_.makeFile("target/file");
  folder_.makeFolder("folder");
  folder_.makeLink("folder/link", "../target");
  folder_.makeLink("folder/dangling", "nowhere");
  EXPECT_FALSE(setRecursively("folder", true));
  EXPECT_EQ(flagsOf("target"), kImmutable);
  EXPECT_EQ(flagsOf("target/file"), 0U);
}

TEST_F(ImmutableFlag, TheFirstFailureEndsTheWalk) {
  folder_.makeFolder("folder");
  ASSERT_EQ(mkfifo(folder_.path("folder/pipe").c_str(), 0600), 0);
  EXPECT_EQ(setRecursively("folder", true), Error::posix(posix::kNotSupported));
  EXPECT_EQ(flagsOf("folder"), kImmutable);
  EXPECT_FALSE(setRecursively("folder", false));
}

TEST_F(ImmutableFlag, FileSystemsAreToldApartByTheirDevice) {
  const auto file = folder_.makeFile("file");
  const auto link = folder_.makeLink("link", "/proc/self/status");
  struct stat status;
  ASSERT_EQ(stat(file.c_str(), &status), 0);
  EXPECT_EQ(ops_->fileSystemIDForPath(file), static_cast<std::uint32_t>(status.st_dev));
  EXPECT_EQ(ops_->fileSystemIDForPath(link), static_cast<std::uint32_t>(status.st_dev));
  EXPECT_NE(ops_->fileSystemIDForPath("/proc/self/status"), static_cast<std::uint32_t>(status.st_dev));
  EXPECT_EQ(ops_->fileSystemIDForPath(folder_.path("missing")), 0xFFFFFFFF);
  EXPECT_EQ(ops_->fileSystemIDForPath(""), 0xFFFFFFFF);
}

class ImmutableFlagAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may set the immutable flag and mount";
  }
  host::LinuxFileSystem fileSystem_;
  TemporaryFolder folder_;
  TemporaryFolder lists_;
  AdvancedOps ops_{fileSystem_, lists_};
};

TEST_F(ImmutableFlagAsRoot, ReachesTheKernel) {
  const auto folder = folder_.makeFolder("folder");
  const auto file = folder_.makeFile("folder/file");
  EXPECT_FALSE(ops_->setUserImmutableAtPath(folder, true, true, false));
  EXPECT_TRUE(inodeFlags(folder) & FS_IMMUTABLE_FL);
  EXPECT_TRUE(inodeFlags(file) & FS_IMMUTABLE_FL);
  EXPECT_FALSE(ops_->setUserImmutableAtPath(folder, false, true, false));
  EXPECT_FALSE(inodeFlags(folder) & FS_IMMUTABLE_FL);
  EXPECT_FALSE(inodeFlags(file) & FS_IMMUTABLE_FL);
}

TEST_F(ImmutableFlagAsRoot, CanBeClearedButNotSetWhereThereAreNoFlags) {
  EXPECT_FALSE(ops_->setImmutableFlag(false, "/proc/self/status", true));
  EXPECT_EQ(ops_->setImmutableFlag(true, "/proc/self/status", true), Error::posix(posix::kNotSupported));
}

TEST_F(ImmutableFlagAsRoot, StaysOnTheFileSystemWhenAsked) {
  const auto top = folder_.makeFolder("folder");
  const auto mountPoint = folder_.makeFolder("folder/mounted");
  const auto beside = folder_.makeFile("folder/beside");
  const MountedFileSystem mounted(mountPoint);
  const auto inside = folder_.makeFile("folder/mounted/inside");

  EXPECT_FALSE(ops_->setUserImmutableAtPath(top, true, true, true));
  EXPECT_TRUE(inodeFlags(top) & FS_IMMUTABLE_FL);
  EXPECT_TRUE(inodeFlags(beside) & FS_IMMUTABLE_FL);
  EXPECT_FALSE(inodeFlags(mountPoint) & FS_IMMUTABLE_FL);
  EXPECT_FALSE(inodeFlags(inside) & FS_IMMUTABLE_FL);

  EXPECT_FALSE(ops_->setUserImmutableAtPath(top, true, true, false));
  EXPECT_TRUE(inodeFlags(mountPoint) & FS_IMMUTABLE_FL);
  EXPECT_TRUE(inodeFlags(inside) & FS_IMMUTABLE_FL);
  EXPECT_FALSE(ops_->setUserImmutableAtPath(top, false, true, false));
}

}  // namespace
}  // namespace vantrell
