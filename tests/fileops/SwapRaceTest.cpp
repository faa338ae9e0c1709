// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Someone exchanges folders for links while root works on the tree. What the links lead to stays untouched.

#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "fileops/FileObjectOperations.h"
#include "fileops/FolderMove.h"
#include "tests/fileops/AdvancedOpsFixture.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"

namespace vantrell {
namespace {

using namespace tests;

class SwapRaceConcurrentAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may set the immutable flag";
    addInodeFlags(outside_.makeFile("immutable"), FS_IMMUTABLE_FL);
    outside_.makeFile("plain");
    outside_.makeFolder("inner");
    addInodeFlags(outside_.makeFile("inner/immutable"), FS_IMMUTABLE_FL);
  }

  void makeTree() {
    folder_.makeFolder("top/victim/inner");
    folder_.makeFile("top/victim/immutable");
    folder_.makeFile("top/victim/plain");
    folder_.makeFile("top/victim/inner/immutable");
    std::filesystem::create_symlink(outside_.path(), folder_.path("link"));
  }
  void removeTree() {
    (void)ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(folder_.path("top"));
    (void)ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(folder_.path("link"));
    ASSERT_FALSE(std::filesystem::exists(folder_.path("top")));
    ASSERT_FALSE(std::filesystem::exists(folder_.path("link")));
  }
  // Exchanges the two until the end of the scope, as a user who owns the folders that hold them.
  std::jthread swap(const std::string& one, const std::string& other) {
    for (const auto& path : {one, other})
      (void)chown(std::filesystem::path(path).parent_path().c_str(), kStranger, kStranger);
    return std::jthread([one, other](const std::stop_token& stop) {
      // Of this thread alone: the library's setresuid would change the whole process.
      if (syscall(SYS_setresuid, -1, kStranger, -1) != 0) std::abort();
      while (!stop.stop_requested()) renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
    });
  }
  void expectOutsideUntouched() {
    ASSERT_TRUE(inodeFlags(outside_.path("immutable")) & FS_IMMUTABLE_FL);
    ASSERT_TRUE(inodeFlags(outside_.path("inner/immutable")) & FS_IMMUTABLE_FL);
    ASSERT_FALSE(inodeFlags(outside_.path("plain")) & FS_IMMUTABLE_FL);
  }

  void removeInodeFlags() {
    setInodeFlags(outside_.path("immutable"), 0);
    setInodeFlags(outside_.path("inner/immutable"), 0);
    outside_.makeFile("only outside");
    ASSERT_EQ(chmod(outside_.path().c_str(), 0700), 0);
  }
  void expectOutsideOwnedByRoot() {
    struct stat status {};
    ASSERT_EQ(lstat(outside_.path().c_str(), &status), 0);
    ASSERT_EQ(status.st_uid, 0U);
    ASSERT_EQ(status.st_mode & 07777, 0700U);
    for (const char* name : {"immutable", "plain", "inner", "inner/immutable", "only outside"}) {
      ASSERT_EQ(lstat(outside_.path(name).c_str(), &status), 0) << name;
      ASSERT_EQ(status.st_uid, 0U) << name;
      ASSERT_EQ(status.st_mode & 0022, 0U) << name;
    }
  }

  static constexpr uid_t kStranger = 1234;
  host::LinuxFileSystem fileSystem_;
  TemporaryFolder folder_;
  TemporaryFolder outside_;
  TemporaryFolder lists_;
  AdvancedOps ops_{fileSystem_, lists_};
};

TEST_F(SwapRaceConcurrentAsRoot, RemovalOfATreeStaysInside) {
  for (int round = 0; round < 100; ++round) {
    makeTree();
    {
      const auto swapper = swap(folder_.path("top/victim"), folder_.path("link"));
      (void)ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(folder_.path("top"));
    }
    expectOutsideUntouched();
    removeTree();
  }
}

TEST_F(SwapRaceConcurrentAsRoot, RemovalWhoseTopIsSwappedStaysInside) {
  for (int round = 0; round < 100; ++round) {
    makeTree();
    {
      const auto swapper = swap(folder_.path("top"), folder_.path("link"));
      (void)ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(folder_.path("top"));
    }
    expectOutsideUntouched();
    removeTree();
  }
}

TEST_F(SwapRaceConcurrentAsRoot, DeletionOfAFoldersContentsStaysInside) {
  FileObjectOperations operations(ops_.ops(), ops_.fileManager(), fileSystem_);
  for (int round = 0; round < 100; ++round) {
    makeTree();
    {
      const auto swapper = swap(folder_.path("top/victim"), folder_.path("link"));
      (void)operations.deleteFoldercontents({folder_.path("top")}, nullptr, nullptr);
    }
    expectOutsideUntouched();
    removeTree();
  }
}

TEST_F(SwapRaceConcurrentAsRoot, MovesToAnotherVolumeTakeNothingFromOutside) {
  const MountedFileSystem volume(folder_.makeFolder("volume"));
  removeInodeFlags();
  FileObjectOperations operations(ops_.ops(), ops_.fileManager(), fileSystem_);
  for (int round = 0; round < 100; ++round) {
    makeTree();
    {
      const auto swapper = swap(folder_.path("top/victim"), folder_.path("link"));
      (void)operations.renameFileobject({folder_.path("top"), folder_.path("volume/moved")});
    }
    expectOutsideOwnedByRoot();
    // The link may have come along as a link, but what it leads to may not.
    const auto moved = folder_.path("volume/moved/victim");
    const bool isFolder = std::filesystem::is_directory(std::filesystem::symlink_status(moved));
    ASSERT_FALSE(isFolder && std::filesystem::exists(moved + "/only outside"));
    (void)ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(folder_.path("volume/moved"));
    removeTree();
  }
}

// The destination's folder belongs to somebody who exchanges what is made there.
TEST_F(SwapRaceConcurrentAsRoot, MovesToAnotherVolumeFurnishNothingOutside) {
  const MountedFileSystem volume(folder_.makeFolder("volume"));
  removeInodeFlags();
  FileObjectOperations operations(ops_.ops(), ops_.fileManager(), fileSystem_);
  std::filesystem::create_symlink(outside_.path(), folder_.path("volume/link"));
  for (int round = 0; round < 100; ++round) {
    makeTree();
    (void)chown(folder_.path("top").c_str(), kStranger, kStranger);
    (void)chown(folder_.path("top/victim").c_str(), kStranger, kStranger);
    {
      const auto swapper = swap(folder_.path("volume/moved"), folder_.path("volume/link"));
      (void)operations.renameFileobject({folder_.path("top"), folder_.path("volume/moved")});
    }
    expectOutsideOwnedByRoot();
    for (const char* name : {"volume/moved", "volume/link"}) {
      const auto made = folder_.path(name);
      if (!std::filesystem::is_symlink(made))
        (void)ops_->enforceRecursiveRemovalOfFileSystemObjectAtPath(made);
      else if (std::string(name) == "volume/moved")
        std::filesystem::rename(made, folder_.path("volume/link"));
    }
    if (!std::filesystem::is_symlink(folder_.path("volume/link")))
      std::filesystem::create_symlink(outside_.path(), folder_.path("volume/link"));
    removeTree();
  }
}

TEST_F(SwapRaceConcurrentAsRoot, StashedFoldersFurnishNothingOutside) {
  removeInodeFlags();
  for (int round = 0; round < 200; ++round) {
    makeTree();
    (void)chown(folder_.path("top/victim").c_str(), kStranger, kStranger);
    (void)chmod(folder_.path("top/victim").c_str(), 0777);
    {
      const auto swapper = swap(folder_.path("top/victim"), folder_.path("link"));
      (void)moveFolderAtPath(ops_.fileManager(), fileSystem_, folder_.path("top/victim"), "stashed", true);
    }
    expectOutsideOwnedByRoot();
    removeTree();
  }
}

// A link that is met is followed to its target, as a link always is here, but never walked through.
TEST_F(SwapRaceConcurrentAsRoot, FlagsOfATreeStayInside) {
  for (int round = 0; round < 50; ++round) {
    makeTree();
    {
      const auto swapper = swap(folder_.path("top/victim"), folder_.path("link"));
      for (int repetition = 0; repetition < 5; ++repetition) {
        (void)ops_->setUserImmutableAtPath(folder_.path("top"), true, true, false);
        // The way back for the swaps; the two folders that may have been flagged are what the link is or led to.
        for (const auto& path : {folder_.path("top"), folder_.path("top/victim"), folder_.path("link")})
          (void)ops_->setImmutableFlag(false, path, false);
      }
    }
    expectOutsideUntouched();
    (void)ops_->setImmutableFlag(false, outside_.path(), false);
    removeTree();
  }
}

}  // namespace
}  // namespace vantrell
