// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Moving and linking, on one volume and from one to another.

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "foundation/FileManager.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/DeepTree.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/RunProgram.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace tests;
using host::FollowLinks;

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::size_t entriesIn(const std::string& path) {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(path)) count += !entry.path().empty();
  return count;
}

class FileManagerMove : public testing::Test {
 protected:
  Error transferError(std::int64_t code, std::int64_t posixCode, const std::string& from, const std::string& to,
                      const char* variant, const std::string& failed = {}) {
    return {"NSCocoaErrorDomain", code,
            Dictionary{{"NSFilePath", failed.empty() ? from : failed},
                       {"NSSourceFilePathErrorKey", from},
                       {"NSDestinationFilePath", to},
                       {"NSUserStringVariant", Array{variant}},
                       {"NSUnderlyingError", Error::posix(posixCode)}}};
  }
  bool isThere(const std::string& name) { return fileSystem_.status(folder_.path(name), FollowLinks::No).has_value(); }
  ErrorOrNil move(const std::string& from, const std::string& to) {
    return fileManager_.moveItemAtPath(folder_.path(from), folder_.path(to));
  }

  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  TemporaryFolder folder_;
};

TEST_F(FileManagerMove, RenamesFilesFoldersAndLinksThemselves) {
  folder_.makeFile("file", "text");
  folder_.makeFolder("folder/inner");
  folder_.makeLink("dangling", "nowhere");
  EXPECT_FALSE(move("file", "folder/file"));
  EXPECT_FALSE(move("folder", "other"));
  EXPECT_FALSE(move("dangling", "moved"));
  EXPECT_EQ(contentOf(folder_.path("other/file")), "text");
  EXPECT_TRUE(isThere("other/inner"));
  EXPECT_EQ(std::filesystem::read_symlink(folder_.path("moved")), "nowhere");
  EXPECT_FALSE(isThere("file") || isThere("folder") || isThere("dangling"));
}

TEST_F(FileManagerMove, NeverReplacesWhatIsThere) {
  folder_.makeFile("file", "old");
  folder_.makeFile("new", "new");
  folder_.makeLink("dangling", "nowhere");
  folder_.makeFolder("folder");
  for (const char* taken : {"file", "dangling", "folder"})
    EXPECT_EQ(move("new", taken), transferError(516, posix::kExists, folder_.path("new"), folder_.path(taken), "Move"));
  EXPECT_EQ(contentOf(folder_.path("file")), "old");
  EXPECT_EQ(contentOf(folder_.path("new")), "new");
}

TEST_F(FileManagerMove, ReportsAMissingSourceOrParentFolder) {
  folder_.makeFile("file");
  EXPECT_EQ(move("missing", "to"),
            transferError(4, posix::kNoEntry, folder_.path("missing"), folder_.path("to"), "Move"));
  EXPECT_EQ(move("file", "missing/to"),
            transferError(4, posix::kNoEntry, folder_.path("file"), folder_.path("missing/to"), "Move"));
  EXPECT_TRUE(isThere("file"));
}

TEST_F(FileManagerMove, RefusesAFolderIntoItself) {
  folder_.makeFolder("folder");
  EXPECT_EQ(move("folder", "folder/inner"),
            transferError(512, posix::kInvalidArgument, folder_.path("folder"), folder_.path("folder/inner"), "Move"));
}

TEST_F(FileManagerMove, LinksTheObjectItself) {
  const auto file = folder_.makeFile("file");
  folder_.makeLink("link", "nowhere");
  EXPECT_FALSE(fileManager_.linkItemAtPath(file, folder_.path("second")));
  EXPECT_FALSE(fileManager_.linkItemAtPath(folder_.path("link"), folder_.path("second link")));
  EXPECT_EQ(std::filesystem::hard_link_count(file), 2U);
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.path("second link")));
}

TEST_F(FileManagerMove, ReportsWhyALinkCannotBeMade) {
  const auto file = folder_.makeFile("file");
  const auto link = [&](const std::string& from, const std::string& to) {
    return fileManager_.linkItemAtPath(folder_.path(from), folder_.path(to));
  };
  EXPECT_EQ(link("missing", "to"),
            transferError(260, posix::kNoEntry, folder_.path("missing"), folder_.path("to"), "Link"));
  EXPECT_EQ(link("file", "file"), transferError(516, posix::kExists, file, file, "Link"));
  EXPECT_EQ(link("file", "missing/to"), transferError(4, posix::kNoEntry, file, folder_.path("missing/to"), "Link"));
}

class FileManagerMoveToOtherVolumeAsRoot : public FileManagerMove {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may mount";
    folder_.makeFolder("volume");
    volume_.emplace(folder_.path("volume"));
  }
  std::optional<MountedFileSystem> volume_;
};

TEST_F(FileManagerMoveToOtherVolumeAsRoot, CarriesContentAndAllMetadata) {
  folder_.makeFolder("tree/inner");
  const auto file = folder_.makeFile("tree/inner/file", std::string(100'000, 'x'));
  folder_.makeLink("tree/link", "nowhere");
  ASSERT_EQ(mkfifo(folder_.path("tree/pipe").c_str(), 0640), 0);
  ASSERT_EQ(mknod(folder_.path("tree/device").c_str(), S_IFCHR | 0600, makedev(1, 3)), 0);
  ASSERT_EQ(mknod(folder_.path("tree/whiteout").c_str(), S_IFCHR | 0600, makedev(0, 0)), 0);
  ASSERT_EQ(chown(file.c_str(), 1234, 4321), 0);
  ASSERT_EQ(chmod(file.c_str(), 04751), 0);
  ASSERT_EQ(lchown(folder_.path("tree/link").c_str(), 77, 78), 0);
  ASSERT_EQ(setxattr(file.c_str(), "trusted.test", "value", 5, 0), 0);
  ASSERT_EQ(chmod(folder_.path("tree").c_str(), 01711), 0);
  const timespec times[] = {{1'000'000, 1}, {2'000'000, 2}};
  ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
  ASSERT_EQ(utimensat(AT_FDCWD, folder_.path("tree/inner").c_str(), times, 0), 0);
  ASSERT_EQ(utimensat(AT_FDCWD, folder_.path("tree").c_str(), times, 0), 0);

  EXPECT_FALSE(move("tree", "volume/moved"));
  EXPECT_FALSE(isThere("tree"));
  EXPECT_EQ(entriesIn(folder_.path("volume")), 1U);
  const auto moved = folder_.path("volume/moved/inner/file");
  EXPECT_EQ(contentOf(moved), std::string(100'000, 'x'));
  char value[16] = {};
  EXPECT_EQ(getxattr(moved.c_str(), "trusted.test", value, sizeof value), 5);
  EXPECT_STREQ(value, "value");
  struct stat status;
  ASSERT_EQ(stat(folder_.path("volume/moved").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 01711U);
  EXPECT_EQ(status.st_mtim.tv_sec, 2'000'000);
  ASSERT_EQ(stat(folder_.path("volume/moved/inner").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 2'000'000);
  EXPECT_EQ(status.st_mtim.tv_nsec, 2);
  ASSERT_EQ(lstat(folder_.path("volume/moved/link").c_str(), &status), 0);
  EXPECT_TRUE(S_ISLNK(status.st_mode));
  EXPECT_EQ(status.st_uid, 77U);
  ASSERT_EQ(lstat(folder_.path("volume/moved/pipe").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFIFO | 0640));
  ASSERT_EQ(lstat(folder_.path("volume/moved/device").c_str(), &status), 0);
  EXPECT_EQ(status.st_rdev, makedev(1, 3));
  ASSERT_EQ(lstat(folder_.path("volume/moved/whiteout").c_str(), &status), 0);
  EXPECT_TRUE(S_ISCHR(status.st_mode) && status.st_rdev == 0);
}

TEST_F(FileManagerMoveToOtherVolumeAsRoot, CarriesOwnerModeAndTimesOfASingleFile) {
  const auto file = folder_.makeFile("file", "text");
  ASSERT_EQ(chown(file.c_str(), 1234, 4321), 0);
  ASSERT_EQ(chmod(file.c_str(), 06755), 0);
  const timespec times[] = {{1'000'000, 1}, {2'000'000, 2}};
  ASSERT_EQ(utimensat(AT_FDCWD, file.c_str(), times, 0), 0);
  EXPECT_FALSE(move("file", "volume/moved"));
  struct stat status;
  ASSERT_EQ(stat(folder_.path("volume/moved").c_str(), &status), 0);
  EXPECT_EQ(status.st_uid, 1234U);
  EXPECT_EQ(status.st_gid, 4321U);
  EXPECT_EQ(status.st_mode & 07777, 06755U);
  EXPECT_EQ(status.st_atim.tv_sec, 1'000'000);
  EXPECT_EQ(status.st_mtim.tv_nsec, 2);
}

TEST_F(FileManagerMoveToOtherVolumeAsRoot, CarriesAccessControlListsWithoutWideningTheGroup) {
  const auto file = folder_.makeFile("file");
  ASSERT_EQ(std::system(("setfacl -m u:1234:rw,g::r " + file).c_str()), 0);
  EXPECT_FALSE(move("file", "volume/moved"));
  const auto list = runProgram("/usr/bin/getfacl", {"-pn", folder_.path("volume/moved")}).output;
  EXPECT_NE(list.find("user:1234:rw-"), std::string::npos) << list;
  EXPECT_NE(list.find("group::r--"), std::string::npos) << list;
}

TEST_F(FileManagerMoveToOtherVolumeAsRoot, NeverReplacesWhatIsThere) {
  folder_.makeFile("file", "new");
  folder_.makeFile("volume/taken", "old");
  EXPECT_EQ(move("file", "volume/taken"),
            transferError(516, posix::kExists, folder_.path("file"), folder_.path("volume/taken"), "Move"));
  EXPECT_EQ(contentOf(folder_.path("volume/taken")), "old");
  EXPECT_EQ(contentOf(folder_.path("file")), "new");
}

TEST_F(FileManagerMoveToOtherVolumeAsRoot, AFailedCopyLeavesNothingBehindAndTheSourceWhole) {
  folder_.makeFolder("tree/a");
  folder_.makeFile("tree/a/file", "text");
  folder_.makeFile("tree/large", std::string(20 << 20, 'x'));  // more than the volume holds
  EXPECT_EQ(move("tree", "volume/moved"),
            transferError(640, posix::kNoSpace, folder_.path("tree"), folder_.path("volume/moved"), "Move",
                          folder_.path("tree/large")));
  EXPECT_EQ(entriesIn(folder_.path("volume")), 0U);
  EXPECT_EQ(contentOf(folder_.path("tree/a/file")), "text");
  EXPECT_EQ(std::filesystem::file_size(folder_.path("tree/large")), 20U << 20);
}

TEST_F(FileManagerMoveToOtherVolumeAsRoot, ASocketEndsTheCopy) {
  folder_.makeFolder("tree");
  folder_.makeFile("tree/file");
  sockaddr_un address{AF_UNIX, {}};
  const auto path = folder_.path("tree/socket");
  ASSERT_LT(path.size(), sizeof address.sun_path);
  path.copy(address.sun_path, path.size());
  const int socketDescriptor = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(socketDescriptor, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  close(socketDescriptor);
  EXPECT_EQ(move("tree", "volume/moved"),
            transferError(512, posix::kNotSupported, folder_.path("tree"), folder_.path("volume/moved"), "Move", path));
  EXPECT_TRUE(isThere("tree/file"));
  EXPECT_EQ(entriesIn(folder_.path("volume")), 0U);
}

TEST_F(FileManagerMoveToOtherVolumeAsRoot, WhatCouldNotBeRemovedIsNotCopied) {
  folder_.makeFolder("tree/inner");
  const auto file = folder_.makeFile("tree/inner/immutable");
  addInodeFlags(file, FS_IMMUTABLE_FL);
  EXPECT_EQ(move("tree", "volume/moved"),
            transferError(513, posix::kNotPermitted, folder_.path("tree"), folder_.path("volume/moved"), "Move", file));
  EXPECT_EQ(entriesIn(folder_.path("volume")), 0U);
  setInodeFlags(file, 0);
  const MountedFileSystem inside(folder_.path("tree/inner"));
  EXPECT_EQ(move("tree", "volume/moved"),
            transferError(512, posix::kBusy, folder_.path("tree"), folder_.path("volume/moved"), "Move",
                          folder_.path("tree/inner")));
  EXPECT_EQ(entriesIn(folder_.path("volume")), 0U);
}

TEST_F(FileManagerMoveToOtherVolumeAsRoot, TakesTreesThatNoPathReaches) {
  makeDeepTree(folder_.makeFolder("tree"), 2000, "d", true);
  EXPECT_FALSE(move("tree", "volume/moved"));
  EXPECT_FALSE(isThere("tree"));
  FileManagerEnumerator enumerator = fileManager_.enumeratorAtPath(folder_.path("volume/moved"));
  std::size_t objects = 0;
  while (enumerator.nextObject()) ++objects;
  EXPECT_EQ(objects, 4000U);
}

TEST_F(FileManagerMoveToOtherVolumeAsRoot, TakesNamesThatAreNotTextOrAsLongAsNamesGet) {
  const std::string longName(255, 'n');
  folder_.makeFolder("tree/\xff\xfe");
  folder_.makeFile("tree/\xff\xfe/" + longName, "text");
  EXPECT_FALSE(move("tree", "volume/" + longName));
  EXPECT_EQ(contentOf(folder_.path("volume/" + longName + "/\xff\xfe/" + longName)), "text");
}

}  // namespace
}  // namespace vantrell
