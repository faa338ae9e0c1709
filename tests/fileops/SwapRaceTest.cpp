// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Someone exchanges folders for links while root works on the tree. What the links lead to stays untouched.

#include <filesystem>
#include <string>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>

#include "tests/fileops/AdvancedOpsFixture.h"
#include "tests/support/InodeFlags.h"

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
  // Exchanges the two until the end of the scope.
  std::jthread swap(const std::string& one, const std::string& other) {
    return std::jthread([one, other](const std::stop_token& stop) {
      while (!stop.stop_requested()) renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
    });
  }
  void expectOutsideUntouched() {
    ASSERT_TRUE(inodeFlags(outside_.path("immutable")) & FS_IMMUTABLE_FL);
    ASSERT_TRUE(inodeFlags(outside_.path("inner/immutable")) & FS_IMMUTABLE_FL);
    ASSERT_FALSE(inodeFlags(outside_.path("plain")) & FS_IMMUTABLE_FL);
  }

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
