// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Forced removal of single objects and of trees.

#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "foundation/Value.h"
#include "tests/fileops/AdvancedOpsFixture.h"
#include "tests/support/DeepTree.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"

namespace vantrell {
namespace {

using namespace tests;
namespace file_flags = host::file_flags;

Error fileDeletion(std::int64_t code, const std::string& path) {
  return {kFileDeletionDomain, code, Dictionary{{"NSFilePath", path}}};
}
Error managerError(std::int64_t cocoaCode, const std::string& path, std::int64_t posixCode) {
  return {"NSCocoaErrorDomain", cocoaCode,
          Dictionary{{"NSFilePath", path},
                     {"NSUserStringVariant", Array{"Remove"}},
                     {"NSUnderlyingError", Error::posix(posixCode)}}};
}

class SingleRemoval : public OverlayFixture {
 protected:
  ErrorOrNil remove(const std::string& name) {
    return ops_->enforceSingleRemovalOfFileSystemObjectAtPath(folder_.path(name));
  }
  AdvancedOps ops_{fileSystem_, lists_, "10.15.7"};
};

TEST_F(SingleRemoval, RemovesFilesLinksAndEmptyFolders) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "kept");
  folder_.makeFile("kept");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  for (const char* name : {"file", "folder", "link", "pipe"}) {
    EXPECT_FALSE(remove(name)) << name;
    EXPECT_FALSE(isThere(name)) << name;
  }
  EXPECT_TRUE(isThere("kept"));
}

TEST_F(SingleRemoval, RemovesALinkWithoutTarget) {
  folder_.makeLink("dangling", "nowhere");
  EXPECT_FALSE(remove("dangling"));
  EXPECT_FALSE(isThere("dangling"));
}

TEST_F(SingleRemoval, RefusesAnEmptyPath) {
  EXPECT_EQ(ops_->enforceSingleRemovalOfFileSystemObjectAtPath(""), Error::posix(posix::kInvalidArgument));
}

TEST_F(SingleRemoval, ReportsAMissingObjectAsPosixErrorWithoutUserInfo) {
  const auto error = remove("missing");
  EXPECT_EQ(error, Error::posix(posix::kNoEntry));
  EXPECT_FALSE(error->hasUserInfo());
}

TEST_F(SingleRemoval, ReportsAFolderThatIsNotEmpty) {
  folder_.makeFolder("folder/inner");
  EXPECT_EQ(remove("folder"), Error::posix(posix::kNotEmpty));
}

TEST_F(SingleRemoval, ClearsBothUserFlags) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  force("file", file_flags::kUserImmutable | file_flags::kUserAppend | file_flags::kUserNoDump);
  force("folder", file_flags::kUserAppend);
  EXPECT_FALSE(remove("file"));
  EXPECT_FALSE(remove("folder"));
  EXPECT_FALSE(isThere("file"));
  EXPECT_FALSE(isThere("folder"));
}

TEST_F(SingleRemoval, LeavesOtherFlagsWhenTheRemovalFails) {
  folder_.makeFolder("folder/inner");
  force("folder", file_flags::kUserImmutable | file_flags::kUserAppend | file_flags::kUserNoDump);
  EXPECT_EQ(remove("folder"), Error::posix(posix::kNotEmpty));
  EXPECT_EQ(flagsOf("folder"), file_flags::kUserNoDump);
}

TEST_F(SingleRemoval, ChangesNoFlagsWhereNoneStandInTheWay) {
  folder_.makeFile("file");
  force("file", file_flags::kUserNoDump);
  EXPECT_FALSE(remove("file"));
  EXPECT_EQ(fileSystem_.flagChanges(), 0U);
}

TEST_F(SingleRemoval, ReportsUserFlagsThatCouldNotBeCleared) {
  folder_.makeFile("file");
  force("file", file_flags::kUserImmutable);
  fileSystem_.failFlagChanges(Error::posix(posix::kNotPermitted));
  EXPECT_EQ(remove("file"), fileDeletion(2, folder_.path("file")));
  EXPECT_TRUE(isThere("file"));
}

TEST_F(SingleRemoval, RefusesSystemFlagsAndLeavesUserFlagsAlone) {
  for (const auto systemFlag : {file_flags::kSystemImmutable, file_flags::kSystemAppend}) {
    folder_.makeFile("file");
    force("file", systemFlag | file_flags::kUserImmutable);
    EXPECT_EQ(remove("file"), fileDeletion(3, folder_.path("file")));
    EXPECT_EQ(flagsOf("file"), systemFlag | file_flags::kUserImmutable);
    EXPECT_EQ(fileSystem_.flagChanges(), 0U);
  }
}

TEST_F(SingleRemoval, IsRefinedWhenItFails) {
  folder_.makeFile("file");
  force("file", file_flags::kSystemRestricted);
  const auto error = remove("file");
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), kFileDeletionDomain);
  EXPECT_EQ(error->code(), 4);
  EXPECT_EQ(*error->userInfo().find(NSUnderlyingErrorKey), Value(Error::posix(posix::kNotPermitted)));
}

class RecursiveRemoval : public OverlayFixture {
 protected:
  ErrorOrNil remove(const std::string& name) {
    return ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(folder_.path(name));
  }
  AdvancedOps ops_{fileSystem_, lists_, "10.15.7"};
};

TEST_F(RecursiveRemoval, RefusesAnEmptyPath) {
  EXPECT_EQ(ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(""), Error::posix(posix::kInvalidArgument));
}

TEST_F(RecursiveRemoval, SucceedsWhereNothingIs) {
  EXPECT_FALSE(remove("missing"));
}

TEST_F(RecursiveRemoval, SeesNothingInALinkWithoutTargetAndLeavesIt) {
  folder_.makeLink("dangling", "nowhere");
  EXPECT_FALSE(remove("dangling"));
  EXPECT_TRUE(isThere("dangling"));
}

TEST_F(RecursiveRemoval, ClearsTheImmutableFlagThroughTheWholeTree) {
  folder_.makeFolder("folder/a/b");
  folder_.makeFile("folder/a/b/file");
  for (const char* name : {"folder", "folder/a", "folder/a/b", "folder/a/b/file"})
    force(name, file_flags::kUserImmutable);
  EXPECT_FALSE(remove("folder"));
  EXPECT_FALSE(isThere("folder"));
  EXPECT_EQ(fileSystem_.flagChanges(), 4U);
}

TEST_F(RecursiveRemoval, RemovesASingleImmutableFile) {
  folder_.makeFile("file");
  force("file", file_flags::kUserImmutable | file_flags::kUserNoDump);
  EXPECT_FALSE(remove("file"));
  EXPECT_FALSE(isThere("file"));
}

TEST_F(RecursiveRemoval, RemovesALinkToAFolderWithoutTouchingTheTarget) {
  folder_.makeFolder("target");
  folder_.makeFile("target/file");
  folder_.makeLink("link", "target");
  force("target", file_flags::kUserImmutable);
  force("target/file", file_flags::kUserImmutable);
  EXPECT_FALSE(remove("link"));
  EXPECT_FALSE(isThere("link"));
  EXPECT_EQ(flagsOf("target"), file_flags::kUserImmutable);
  EXPECT_EQ(flagsOf("target/file"), file_flags::kUserImmutable);
}

TEST_F(RecursiveRemoval, ASlashAfterALinkDoesNotReachTheTarget) {
  folder_.makeFolder("target");
  folder_.makeFile("target/file");
  folder_.makeLink("link", "target");
  force("target/file", file_flags::kUserImmutable);
  EXPECT_FALSE(remove("link/"));
  EXPECT_FALSE(isThere("link"));
  EXPECT_EQ(flagsOf("target/file"), file_flags::kUserImmutable);
}

TEST_F(RecursiveRemoval, LeavesTheTargetsOfLinksInsideAlone) {
  folder_.makeFile("target");
  force("target", file_flags::kUserImmutable);
  folder_.makeFolder("folder");
  folder_.makeLink("folder/link", "../target");
  folder_.makeLink("folder/dangling", "nowhere");
  EXPECT_FALSE(remove("folder"));
  EXPECT_FALSE(isThere("folder"));
  EXPECT_EQ(flagsOf("target"), file_flags::kUserImmutable);
}

TEST_F(RecursiveRemoval, StopsBeforeRemovingWhenAFlagCannotBeCleared) {
  folder_.makeFolder("folder/inner");
  folder_.makeFile("folder/other");
  force("folder/inner", file_flags::kUserImmutable);
  fileSystem_.failFlagChanges(Error::posix(posix::kInputOutput));
  EXPECT_EQ(remove("folder"), Error::posix(posix::kInputOutput));
  EXPECT_TRUE(isThere("folder/inner"));
  EXPECT_TRUE(isThere("folder/other"));

  force("folder/inner", 0);
  force("folder", file_flags::kUserImmutable);
  EXPECT_EQ(remove("folder"), Error::posix(posix::kInputOutput));
}

TEST_F(RecursiveRemoval, TakesMissingFlagSupportForClearedFlags) {
  folder_.makeFile("folder", "");
  force("folder", file_flags::kUserNoDump | file_flags::kUserImmutable);
  fileSystem_.failFlagChanges(Error::posix(posix::kNotSupported));
  // The flag is passed over; that the object still has it shows in the removal.
  EXPECT_EQ(remove("folder"), managerError(513, folder_.path("folder"), posix::kNotPermitted));
}

TEST_F(RecursiveRemoval, FailsAtASystemFlagAfterClearingUserFlags) {
  folder_.makeFolder("folder/a");
  folder_.makeFile("folder/a/system");
  folder_.makeFile("folder/user");
  force("folder/a/system", file_flags::kSystemImmutable);
  force("folder", file_flags::kUserImmutable);
  force("folder/a", file_flags::kUserImmutable);
  EXPECT_EQ(remove("folder"), managerError(513, folder_.path("folder/a/system"), posix::kNotPermitted));
  EXPECT_TRUE(isThere("folder/a/system"));
  EXPECT_EQ(flagsOf("folder"), 0U);
  EXPECT_EQ(flagsOf("folder/a"), 0U);
  EXPECT_EQ(flagsOf("folder/a/system"), file_flags::kSystemImmutable);
}

TEST_F(RecursiveRemoval, ReportsAFlagThatItCannotClearBesideASystemFlag) {
  folder_.makeFolder("folder");
  folder_.makeFile("folder/file");
  force("folder/file", file_flags::kSystemImmutable | file_flags::kUserImmutable);
  EXPECT_EQ(remove("folder"), Error::posix(posix::kNotPermitted));
}

TEST_F(RecursiveRemoval, DoesNotClearTheAppendFlag) {
  folder_.makeFolder("folder");
  folder_.makeFile("folder/file");
  force("folder/file", file_flags::kUserAppend);
  EXPECT_EQ(remove("folder"), managerError(513, folder_.path("folder/file"), posix::kNotPermitted));
  EXPECT_EQ(flagsOf("folder/file"), file_flags::kUserAppend);
}

TEST_F(RecursiveRemoval, IsRefinedAgainstTheTopOfTheTree) {
  folder_.makeFolder("folder/inner");
  force("folder/inner", file_flags::kUserAppend);
  force("folder", file_flags::kSystemNoUnlink);
  const auto failed = managerError(513, folder_.path("folder/inner"), posix::kNotPermitted);
  EXPECT_EQ(remove("folder"), Error(kFileDeletionDomain, 4,
                                    Dictionary{{"NSFilePath", folder_.path("folder")}, {"NSUnderlyingError", failed}}));
}

TEST_F(RecursiveRemoval, RefusesPathsThatCanNeverGoBeforeTouchingAnything) {
  folder_.makeFolder("folder/inner");
  force("folder/inner", file_flags::kUserImmutable);
  const auto path = folder_.path("folder/inner/..");
  EXPECT_EQ(remove("folder/inner/.."), managerError(512, path, posix::kInvalidArgument));
  EXPECT_EQ(flagsOf("folder/inner"), file_flags::kUserImmutable);
  EXPECT_EQ(fileSystem_.flagChanges(), 0U);
}

TEST_F(RecursiveRemoval, IsChosenByTheCaller) {
  folder_.makeFolder("folder/inner");
  EXPECT_EQ(ops_->enforceRemovalOfFileSystemObjectAtPath(folder_.path("folder"), false),
            Error::posix(posix::kNotEmpty));
  EXPECT_FALSE(ops_->enforceRemovalOfFileSystemObjectAtPath(folder_.path("folder"), true));
  EXPECT_FALSE(isThere("folder"));
}

// The same on the real thing, without decoration.
class RemovalAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may set flags, make devices and mount";
  }
  host::LinuxFileSystem fileSystem_;
  TemporaryFolder folder_;
  TemporaryFolder lists_;
  AdvancedOps ops_{fileSystem_, lists_};
};

TEST_F(RemovalAsRoot, RefusesAWhiteout) {
  const auto path = folder_.path("whiteout");
  ASSERT_EQ(mknod(path.c_str(), S_IFCHR | 0600, makedev(0, 0)), 0);
  EXPECT_EQ(ops_->enforceSingleRemovalOfFileSystemObjectAtPath(path), fileDeletion(1, path));
  EXPECT_TRUE(fileSystem_.status(path, host::FollowLinks::No));
}

TEST_F(RemovalAsRoot, RemovesImmutableAndAppendOnlyObjects) {
  const auto immutable = folder_.makeFile("immutable");
  const auto append = folder_.makeFolder("append");
  addInodeFlags(immutable, FS_IMMUTABLE_FL | FS_NODUMP_FL);
  addInodeFlags(append, FS_APPEND_FL);
  EXPECT_FALSE(ops_->enforceSingleRemovalOfFileSystemObjectAtPath(immutable));
  EXPECT_FALSE(ops_->enforceSingleRemovalOfFileSystemObjectAtPath(append));
  EXPECT_FALSE(fileSystem_.status(immutable, host::FollowLinks::No));
  EXPECT_FALSE(fileSystem_.status(append, host::FollowLinks::No));
}

TEST_F(RemovalAsRoot, RemovesAnImmutableTree) {
  const auto top = folder_.makeFolder("folder");
  makeDeepTree(top, 200, "d", true);
  addInodeFlags(folder_.makeFile("folder/file"), FS_IMMUTABLE_FL);
  addInodeFlags(folder_.path("folder/d/d/d/file"), FS_IMMUTABLE_FL);
  addInodeFlags(folder_.path("folder/d/d/d"), FS_IMMUTABLE_FL);
  addInodeFlags(top, FS_IMMUTABLE_FL);
  EXPECT_FALSE(ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(top));
  EXPECT_FALSE(fileSystem_.status(top, host::FollowLinks::No));
}

TEST_F(RemovalAsRoot, RemovesLockedObjectsWithLongNamesAndNamesThatAreNoText) {
  const auto top = folder_.makeFolder("folder");
  const std::string longName(255, 'x');
  folder_.makeFolder("folder/" + longName);
  addInodeFlags(folder_.makeFile("folder/" + longName + "/\xff\xfe\n"), FS_IMMUTABLE_FL);
  addInodeFlags(folder_.makeFile("folder/" + longName + "/" + longName), FS_IMMUTABLE_FL);
  addInodeFlags(folder_.path("folder/" + longName), FS_IMMUTABLE_FL);
  EXPECT_FALSE(ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(top));
  EXPECT_FALSE(fileSystem_.status(top, host::FollowLinks::No));
}

TEST_F(RemovalAsRoot, RemovesTwoThousandLevelsAndAHundredThousandEntriesOfOneFolder) {
  if (access("/dev/shm", W_OK) != 0) GTEST_SKIP() << "no file system in memory to make so many files on";
  const auto top = "/dev/shm/vantrell-removal-" + std::to_string(getpid());
  ASSERT_EQ(mkdir(top.c_str(), 0700), 0);
  makeDeepTree(top, 2'000, "d", true);
  for (int i = 0; i < 100'000; ++i) {
    const auto path = top + "/" + std::to_string(i);
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_GE(file, 0);
    close(file);
  }
  addInodeFlags(top + "/99999", FS_IMMUTABLE_FL);
  EXPECT_FALSE(ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(top));
  EXPECT_FALSE(fileSystem_.status(top, host::FollowLinks::No));
}

TEST_F(RemovalAsRoot, FailsAtAnAppendOnlyDescendant) {
  const auto top = folder_.makeFolder("folder");
  const auto file = folder_.makeFile("folder/file");
  addInodeFlags(file, FS_APPEND_FL);
  EXPECT_EQ(ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(top), managerError(513, file, posix::kNotPermitted));
}

TEST_F(RemovalAsRoot, ReportsFlagsOnAReadOnlyVolume) {
  MountedFileSystem mounted(folder_.makeFolder("mounted"));
  const auto file = folder_.makeFile("mounted/file");
  addInodeFlags(file, FS_IMMUTABLE_FL);
  mounted.makeReadOnly();
  EXPECT_EQ(ops_->enforceSingleRemovalOfFileSystemObjectAtPath(file), fileDeletion(2, file));
  EXPECT_EQ(ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(file), Error::posix(posix::kReadOnlyFileSystem));
}

}  // namespace
}  // namespace vantrell
