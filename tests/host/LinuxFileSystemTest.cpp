// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using host::FileType;
using host::FollowLinks;
using host::LinuxFileSystem;
using host::MountPoints;
using tests::addInodeFlags;
using tests::inodeFlags;
using tests::MountedFileSystem;
using tests::setInodeFlags;
using tests::TemporaryFolder;
namespace file_flags = host::file_flags;

class LinuxFileSystemAsRoot : public testing::Test {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may set flags, make devices and mount";
  }
  LinuxFileSystem fileSystem_;
  TemporaryFolder folder_;
};

TEST_F(LinuxFileSystemAsRoot, ReadsTheInodeFlags) {
  const auto path = folder_.makeFile("file");
  addInodeFlags(path, FS_IMMUTABLE_FL);
  EXPECT_EQ(fileSystem_.status(path, FollowLinks::No)->flags, file_flags::kUserImmutable);
  setInodeFlags(path, (inodeFlags(path) & ~FS_IMMUTABLE_FL) | FS_APPEND_FL | FS_NODUMP_FL);
  EXPECT_EQ(fileSystem_.status(path, FollowLinks::No)->flags, file_flags::kUserAppend | file_flags::kUserNoDump);
}

TEST_F(LinuxFileSystemAsRoot, KeepsInodeFlagsThatHaveNoCounterpart) {
  const auto path = folder_.makeFile("file");
  addInodeFlags(path, FS_NOATIME_FL);
  const auto before = inodeFlags(path);
  ASSERT_FALSE(fileSystem_.setFlags(path, file_flags::kUserImmutable, FollowLinks::No));
  EXPECT_EQ(inodeFlags(path), before | FS_IMMUTABLE_FL);
  ASSERT_FALSE(fileSystem_.setFlags(path, 0, FollowLinks::No));
  EXPECT_EQ(inodeFlags(path), before);
}

TEST_F(LinuxFileSystemAsRoot, HasNoSystemFlags) {
  const auto path = folder_.makeFile("file");
  EXPECT_EQ(fileSystem_.setFlags(path, file_flags::kSystemImmutable, FollowLinks::No),
            Error::posix(posix::kNotSupported));
  EXPECT_EQ(fileSystem_.setFlags(path, file_flags::kUserImmutable | file_flags::kSystemRestricted, FollowLinks::No),
            Error::posix(posix::kNotSupported));
  EXPECT_EQ(fileSystem_.status(path, FollowLinks::No)->flags, 0U);
}

TEST_F(LinuxFileSystemAsRoot, TellsWhenTheFileSystemHasNoFlags) {
  EXPECT_EQ(fileSystem_.setFlags("/proc/self/status", file_flags::kUserImmutable, FollowLinks::No),
            Error::posix(posix::kNotSupported));
  const auto folder = fileSystem_.openDirectory("/proc/self", FollowLinks::Yes);
  ASSERT_TRUE(folder);
  EXPECT_EQ((*folder)->setFlagsOf("status", file_flags::kUserImmutable, FollowLinks::No),
            Error::posix(posix::kNotSupported));
  EXPECT_EQ((*folder)->setFlags(file_flags::kUserImmutable), Error::posix(posix::kNotSupported));
}

TEST_F(LinuxFileSystemAsRoot, TakesTheDeviceZeroForAWhiteout) {
  ASSERT_EQ(mknod(folder_.path("whiteout").c_str(), S_IFCHR | 0600, makedev(0, 0)), 0);
  ASSERT_EQ(mknod(folder_.path("device").c_str(), S_IFCHR | 0600, makedev(1, 3)), 0);
  ASSERT_EQ(mknod(folder_.path("block").c_str(), S_IFBLK | 0600, makedev(0, 0)), 0);
  EXPECT_EQ(fileSystem_.status(folder_.path("whiteout"), FollowLinks::No)->type, FileType::Whiteout);
  EXPECT_EQ(fileSystem_.status(folder_.path("device"), FollowLinks::No)->type, FileType::CharacterDevice);
  EXPECT_EQ(fileSystem_.status(folder_.path("block"), FollowLinks::No)->type, FileType::BlockDevice);
}

TEST_F(LinuxFileSystemAsRoot, NeverOpensAPipeToSetItsFlags) {
  const auto path = folder_.path("pipe");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(fileSystem_.setFlags(path, file_flags::kUserImmutable, FollowLinks::Yes),
            Error::posix(posix::kNotSupported));
  // Had it been opened for reading, even for a moment, a writer would be let in now.
  EXPECT_EQ(open(path.c_str(), O_WRONLY | O_NONBLOCK), -1);
  EXPECT_EQ(errno, ENXIO);
}

TEST_F(LinuxFileSystemAsRoot, RefusesMountPointsWhenAsked) {
  const MountedFileSystem mounted(folder_.makeFolder("mounted"));
  const MountedFileSystem bound(folder_.makeFolder("bound"), folder_.makeFolder("origin"));
  const auto handle = fileSystem_.openDirectory(folder_.path(), FollowLinks::No);
  ASSERT_TRUE(handle);
  EXPECT_TRUE((*handle)->openDirectory("mounted", MountPoints::Enter));
  EXPECT_TRUE((*handle)->openDirectory("bound", MountPoints::Enter));
  EXPECT_TRUE((*handle)->openDirectory("origin", MountPoints::Refuse));
  for (const char* name : {"mounted", "bound"}) {
    const auto refused = (*handle)->openDirectory(name, MountPoints::Refuse);
    ASSERT_FALSE(refused) << name;
    EXPECT_EQ(refused.error(), Error::posix(posix::kCrossDevice));
  }
}

TEST_F(LinuxFileSystemAsRoot, ReportsAReadOnlyFileSystem) {
  MountedFileSystem mounted(folder_.makeFolder("mounted"));
  folder_.makeFile("mounted/file");
  mounted.makeReadOnly();
  EXPECT_EQ(fileSystem_.setFlags(folder_.path("mounted/file"), file_flags::kUserImmutable, FollowLinks::No),
            Error::posix(posix::kReadOnlyFileSystem));
  EXPECT_EQ(fileSystem_.removeFile(folder_.path("mounted/file")), Error::posix(posix::kReadOnlyFileSystem));
}

TEST(LinuxFileSystemTest, LoadsPseudoFilesWhoseSizeIsNotTold) {
  LinuxFileSystem fileSystem;
  const auto contents = fileSystem.loadFile("/proc/self/status", 1 << 20);
  ASSERT_TRUE(contents);
  EXPECT_TRUE(textOf((*contents)->bytes()).starts_with("Name:"));
  EXPECT_EQ(fileSystem.loadFile("/proc/self/status", 10).error(), Error::posix(posix::kFileTooLarge));
}

// A mapping would bring the process down here, with SIGBUS.
TEST(LinuxFileSystemTest, AFileThatOthersMayWriteCanShrinkUnderItsReader) {
  LinuxFileSystem fileSystem;
  const TemporaryFolder folder;
  const auto path = folder.makeFile("file", std::string(300'000, 'x'));
  ASSERT_EQ(chmod(path.c_str(), 0666), 0);
  const auto contents = fileSystem.loadFile(path, 1 << 20);
  ASSERT_TRUE(contents);
  ASSERT_EQ(truncate(path.c_str(), 0), 0);
  EXPECT_EQ(textOf((*contents)->bytes()), std::string(300'000, 'x'));
}

TEST(LinuxFileSystemTest, LeavesNoDescriptorBehind) {
  const auto openDescriptors = [] {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
    return count;
  };
  LinuxFileSystem fileSystem;
  const TemporaryFolder folder;
  folder.makeFile("file", std::string(300'000, 'x'));
  folder.makeFolder("folder");
  const auto before = openDescriptors();
  for (int round = 0; round < 10; ++round) {
    const auto handle = fileSystem.openDirectory(folder.path(), FollowLinks::No);
    EXPECT_TRUE((*handle)->openDirectory("folder", MountPoints::Refuse));
    EXPECT_FALSE((*handle)->openDirectory("file", MountPoints::Refuse));
    EXPECT_TRUE((*handle)->openParent());
    (void)(*handle)->setFlagsOf("file", file_flags::kUserNoDump, FollowLinks::No);
    EXPECT_TRUE(fileSystem.locate(folder.path("file")));
    EXPECT_FALSE(fileSystem.locate(folder.path("file/x")));
    EXPECT_TRUE(fileSystem.openObject(folder.path("file"), FollowLinks::No));
    EXPECT_TRUE((*handle)->openObject("folder", FollowLinks::No).value()->openDirectory());
    EXPECT_TRUE((*handle)->openFile("file"));
    EXPECT_FALSE((*handle)->openFile("folder"));
    EXPECT_TRUE((*handle)->createFile("new", 0600));
    EXPECT_FALSE((*handle)->createFile("new", 0600));
    EXPECT_FALSE((*handle)->makeDirectory("made", 02770));
    EXPECT_FALSE((*handle)->setPermissionsOf("made", 0700));
    EXPECT_FALSE((*handle)->setAccessControlListOf("made", nullptr));
    EXPECT_FALSE((*handle)->removeDirectory("made"));
    EXPECT_FALSE((*handle)->removeFile("new"));
    EXPECT_TRUE(fileSystem.loadFile(folder.path("file"), 1 << 20));
    EXPECT_FALSE(fileSystem.loadFile(folder.path("folder"), 1 << 20));
  }
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace vantrell
