// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/linux/DescriptorPath.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/RenameAfterCheck.h"
#include "tests/host/FileSystemContract.h"
#include "tests/support/MountedFileSystem.h"

namespace vantrell {
namespace {

using host::FileDescriptor;
using host::renameAfterCheck;
using tests::codeOf;
using tests::statusOfObject;

// Every file system that tests can count on knows how not to replace, so the other way is asked for by its name.
class RenameAfterCheck : public testing::Test {
 protected:
  std::int64_t rename(const char* name, const char* newName) const {
    return codeOf(renameAfterCheck(folder_.get(), name, folder_.get(), newName));
  }

  tests::TemporaryFolder files_;
  FileDescriptor folder_{open(files_.path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)};
};

TEST_F(RenameAfterCheck, MovesObjectsOfAnyType) {
  files_.makeFile("file");
  files_.makeFolder("folder/inner");
  files_.makeLink("link", "file");
  ASSERT_EQ(mkfifo(files_.path("pipe").c_str(), 0600), 0);
  for (const std::string name : {"file", "folder", "link", "pipe"}) {
    const auto inode = statusOfObject(files_.path(name)).st_ino;
    EXPECT_EQ(rename(name.c_str(), ("new-" + name).c_str()), 0) << name;
    EXPECT_EQ(statusOfObject(files_.path("new-" + name)).st_ino, inode);
    EXPECT_NE(access(files_.path(name).c_str(), F_OK), 0);
  }
  EXPECT_EQ(statusOfObject(files_.path("new-file")).st_nlink, 1U);
}

TEST_F(RenameAfterCheck, NeverReplaces) {
  files_.makeFile("file");
  files_.makeFile("taken");
  files_.makeLink("dangling", "nowhere");
  files_.makeFolder("folder");
  files_.makeFolder("empty");
  for (const char* name : {"taken", "dangling", "empty"}) {
    EXPECT_EQ(rename("file", name), posix::kExists) << name;
    EXPECT_EQ(rename("folder", name), posix::kExists) << name;
  }
  EXPECT_EQ(rename("missing", "new"), posix::kNoEntry);
}

TEST_F(RenameAfterCheck, AFolderDoesNotComeToLieInItself) {
  files_.makeFolder("folder");
  const FileDescriptor inside(open(files_.path("folder").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  EXPECT_EQ(codeOf(renameAfterCheck(folder_.get(), "folder", inside.get(), "x")), posix::kInvalidArgument);
}

class RenameAfterCheckAsRoot : public RenameAfterCheck {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may mount";
  }
};

TEST_F(RenameAfterCheckAsRoot, NothingIsMovedAcrossFileSystems) {
  const tests::MountedFileSystem mounted(files_.makeFolder("mounted"));
  files_.makeFile("file");
  files_.makeFolder("folder");
  const FileDescriptor other(open(files_.path("mounted").c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  EXPECT_EQ(codeOf(renameAfterCheck(folder_.get(), "file", other.get(), "x")), posix::kCrossDevice);
  EXPECT_EQ(codeOf(renameAfterCheck(folder_.get(), "folder", other.get(), "x")), posix::kCrossDevice);
  EXPECT_TRUE(std::filesystem::exists(files_.path("file")));
}

TEST(DescriptorPathTest, LeadsToDescriptorsAndEntries) {
  EXPECT_STREQ(host::DescriptorPath(7).get(), "/proc/self/fd/7");
  EXPECT_STREQ(host::DescriptorPath(2147483647, "name").get(), "/proc/self/fd/2147483647/name");
  const std::string longest(255, 'x');
  EXPECT_EQ(host::DescriptorPath(0, longest.c_str()).get(), "/proc/self/fd/0/" + longest);
  EXPECT_EQ(host::DescriptorPath(0, std::string(9000, 'x').c_str()).get(), "/proc/self/fd/0/" + longest + "x");
}

}  // namespace
}  // namespace vantrell
