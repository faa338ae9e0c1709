// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/FileManager.h"
#include "host/linux/LinuxFileSystem.h"
#include "process/QELTaskExecutor.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {
namespace {

class ExecutablePermissionsAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may make files that are root's";
    set(folder_.makeFolder("bin"), 0755);
    set(program_, 0755);
  }
  static void set(const std::string& path, mode_t mode, uid_t owner = 0, gid_t group = 0) {
    ASSERT_EQ(chown(path.c_str(), owner, group), 0);
    ASSERT_EQ(chmod(path.c_str(), mode), 0);
  }
  bool isSafe(const std::string& path) {
    return QELTaskExecutor::hasExecutableSafePermissionsAtPath(path, fileManager_, fileSystem_);
  }

  TemporaryFolder folder_;
  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  std::string bin_ = folder_.makeFolder("bin");
  std::string program_ = folder_.makeFile("bin/program");
};

TEST_F(ExecutablePermissionsAsRoot, RootsFileInRootsFolderIsSafe) {
  EXPECT_TRUE(isSafe(program_));
  for (const mode_t mode : {0700, 0555, 04755, 0, 0644}) {
    set(program_, mode);
    EXPECT_TRUE(isSafe(program_)) << std::oct << mode;
  }
}

TEST_F(ExecutablePermissionsAsRoot, AFileThatOthersMayWriteIsNot) {
  for (const mode_t mode : {0775, 0757, 0777, 0020, 0002}) {
    set(program_, mode);
    EXPECT_FALSE(isSafe(program_)) << std::oct << mode;
  }
}

TEST_F(ExecutablePermissionsAsRoot, AFileOfAnotherUserOrGroupIsNot) {
  set(program_, 0755, 501, 0);
  EXPECT_FALSE(isSafe(program_));
  set(program_, 0755, 0, 20);
  EXPECT_FALSE(isSafe(program_));
}

TEST_F(ExecutablePermissionsAsRoot, TheFolderIsJudgedTheSameWay) {
  set(bin_, 0755, 0, 20);
  EXPECT_FALSE(isSafe(program_));
  set(bin_, 0755, 501, 0);
  EXPECT_FALSE(isSafe(program_));
  for (const mode_t mode : {0775, 0757, 01777}) {
    set(bin_, mode);
    EXPECT_FALSE(isSafe(program_)) << std::oct << mode;
  }
  set(bin_, 0700);
  EXPECT_TRUE(isSafe(program_));
}

TEST_F(ExecutablePermissionsAsRoot, OnlyTheFolderItLiesInIsJudged) {
  set(folder_.path(), 0777, 501, 20);
  EXPECT_TRUE(isSafe(program_));
}

TEST_F(ExecutablePermissionsAsRoot, NothingAndFoldersAreNotSafe) {
  set(folder_.makeFolder("bin/folder"), 0755);
  EXPECT_FALSE(isSafe(""));
  EXPECT_FALSE(isSafe("/"));
  EXPECT_FALSE(isSafe(folder_.path("bin/folder")));
  EXPECT_FALSE(isSafe(folder_.path("bin/missing")));
  EXPECT_FALSE(isSafe(folder_.path("missing/program")));
  EXPECT_FALSE(isSafe(program_ + "/below"));
  EXPECT_FALSE(isSafe(program_ + std::string("\0x", 2)));
}

TEST_F(ExecutablePermissionsAsRoot, ALinkIsJudgedByWhatItLeadsTo) {
  const auto open = folder_.makeFolder("open");
  set(open, 0777, 501, 20);
  const auto link = folder_.makeLink("open/link", "../bin/program");
  const auto second = folder_.makeLink("open/second", link);
  ASSERT_EQ(lchown(link.c_str(), 501, 20), 0);
  EXPECT_TRUE(isSafe(link));
  EXPECT_TRUE(isSafe(second));
  EXPECT_TRUE(isSafe(folder_.makeLink("open/folder", bin_) + "/program"));
  set(folder_.makeFile("open/unsafe folder"), 0755);
  EXPECT_FALSE(isSafe(folder_.makeLink("bin/to unsafe folder", folder_.path("open/unsafe folder"))));
  set(program_, 0775);
  EXPECT_FALSE(isSafe(link));
}

TEST_F(ExecutablePermissionsAsRoot, LinksThatLeadNowhereAreNotSafe) {
  EXPECT_FALSE(isSafe(folder_.makeLink("bin/dangling", "missing")));
  EXPECT_FALSE(isSafe(folder_.makeLink("bin/loop", "loop")));
  folder_.makeLink("bin/a", "b");
  EXPECT_FALSE(isSafe(folder_.makeLink("bin/b", "a")));
}

}  // namespace
}  // namespace vantrell::tests
