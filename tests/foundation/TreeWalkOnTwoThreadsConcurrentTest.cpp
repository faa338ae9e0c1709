// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Two threads in one walk come to what one thread comes to.

#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <unistd.h>

#include "foundation/FileManager.h"
#include "foundation/PosixCodes.h"
#include "foundation/TreeWalk.h"
#include "foundation/Value.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace tests;
using host::FollowLinks;
using host::MountPoints;

// Keeps what it met; a folder must be left after everything in it.
class Collector final : public TreeVisitor {
 public:
  Result<Enter> enter(TreeEntry& entry) override {
    const std::lock_guard lock(mutex_);
    EXPECT_TRUE(entered.insert(entry.path()).second) << entry.path();
    if (entry.path() == failAt) return failure(Error("test", 7));
    return entry.type() == host::FileType::Directory ? Enter::Descend : Enter::Skip;
  }
  Result<Leave> leave(TreeEntry& entry, unsigned) override {
    const std::lock_guard lock(mutex_);
    const auto prefix = entry.path() + "/";
    for (auto found = entered.lower_bound(prefix); found != entered.end() && found->starts_with(prefix); ++found) {
      EXPECT_TRUE(!std::filesystem::is_directory(*found) || left.contains(*found)) << *found;
    }
    left.insert(entry.path());
    return Leave::Done;
  }

  std::set<std::string> entered;
  std::set<std::string> left;
  std::string failAt;

 private:
  std::mutex mutex_;
};

class TreeWalkOnTwoThreadsConcurrent : public testing::Test {
 protected:
  void SetUp() override {
    for (int outer = 0; outer < 12; ++outer)
      for (int inner = 0; inner < 12; ++inner) {
        const auto path = std::to_string(outer) + "/" + std::to_string(inner);
        folder_.makeFolder(path);
        for (int file = 0; file < 4; ++file) folder_.makeFile(path + "/" + std::to_string(file), "");
      }
  }
  ErrorOrNil walk(TreeVisitor& visitor) {
    auto top = fileSystem_.openDirectory(folder_.path(), FollowLinks::No);
    return TreeWalk::runOnTwoThreads(std::move(top.value()), folder_.path(), MountPoints::Enter, visitor);
  }
  host::LinuxFileSystem fileSystem_;
  TemporaryFolder folder_;
};

TEST_F(TreeWalkOnTwoThreadsConcurrent, MeetsEverythingOnceAndLeavesFoldersLast) {
  Collector collector;
  EXPECT_FALSE(walk(collector));
  EXPECT_EQ(collector.entered.size(), 12U + 144U + 576U);
  EXPECT_EQ(collector.left.size(), 12U + 144U);
}

TEST_F(TreeWalkOnTwoThreadsConcurrent, EndsWithTheFailureWherever) {
  for (const char* name : {"0", "5", "11/11", "7/3/2", "0/0/0"}) {
    Collector collector;
    collector.failAt = folder_.path(name);
    EXPECT_EQ(walk(collector), Error("test", 7)) << name;
  }
}

TEST_F(TreeWalkOnTwoThreadsConcurrent, RemovalNamesTheOneObjectThatWithstood) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may set the immutable flag";
  FileManager fileManager(fileSystem_);
  const auto file = folder_.path("7/3/2");
  addInodeFlags(file, FS_IMMUTABLE_FL);
  const auto error = fileManager.removeItemAtPath(folder_.path("7"));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), 513);
  EXPECT_EQ(*error->userInfo().find(NSFilePathErrorKey), Value(file));
  setInodeFlags(file, 0);
  addInodeFlags(folder_.path("3/9"), FS_IMMUTABLE_FL);
  const auto other = fileManager.removeItemAtPath(folder_.path("3"));
  ASSERT_TRUE(other);
  EXPECT_TRUE(other->userInfo().find(NSFilePathErrorKey)->asString()->starts_with(folder_.path("3/9/")));
}

TEST_F(TreeWalkOnTwoThreadsConcurrent, RemovalLeavesNothing) {
  FileManager fileManager(fileSystem_);
  for (int outer = 0; outer < 12; ++outer)
    EXPECT_FALSE(fileManager.removeItemAtPath(folder_.path(std::to_string(outer))));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

}  // namespace
}  // namespace vantrell
