// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/FileSystemContract.h"

namespace vantrell {
namespace {

using host::FileType;
using host::FollowLinks;
using host::MountPoints;
using tests::codeOf;

class LocateContract : public tests::FileSystemContractBase {};
INSTANTIATE_TEST_SUITE_P(All, LocateContract, tests::fileSystemImplementations(), tests::implementationName);

TEST_P(LocateContract, SeparatesTheLastComponent) {
  folder_.makeFolder("a/b");
  for (const char* path : {"a/b", "a/b/", "a//b///", "a/./b", "a/../a/b"}) {
    const auto location = fileSystem_.locate(folder_.path(path));
    ASSERT_TRUE(location) << path;
    EXPECT_EQ(location->name, "b");
    EXPECT_EQ(location->folder->status()->inode, tests::statusOfObject(folder_.path("a")).st_ino);
    EXPECT_EQ(location->folder->statusOf("b", FollowLinks::No)->type, FileType::Directory);
  }
}

TEST_P(LocateContract, AcceptsWhatDoesNotExistInAFolderThatDoes) {
  const auto location = fileSystem_.locate(folder_.path("missing"));
  ASSERT_TRUE(location);
  EXPECT_EQ(location->name, "missing");
  EXPECT_EQ(codeOf(location->folder->statusOf("missing", FollowLinks::No)), posix::kNoEntry);
}

TEST_P(LocateContract, TakesRelativePathsFromTheWorkingFolder) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.makeFolder("inner"));
  folder_.makeFile("inner/file");
  const auto plain = fileSystem_.locate("file");
  const auto slash = fileSystem_.locate("file//");
  const auto parent = fileSystem_.locate("../inner");
  std::filesystem::current_path(before);
  ASSERT_TRUE(plain && slash && parent);
  EXPECT_EQ(plain->folder->status()->inode, tests::statusOfObject(folder_.path("inner")).st_ino);
  EXPECT_EQ(slash->name, "file");
  EXPECT_EQ(parent->name, "inner");
  EXPECT_EQ(parent->folder->status()->inode, tests::statusOfObject(folder_.path()).st_ino);
}

TEST_P(LocateContract, ThingsInTheRootFolderHaveANameThere) {
  const auto location = fileSystem_.locate("//etc");
  ASSERT_TRUE(location);
  EXPECT_EQ(location->name, "etc");
  EXPECT_EQ(location->folder->status()->inode, tests::statusOfObject("/").st_ino);
}

TEST_P(LocateContract, RefusesPathsWithoutALastComponent) {
  for (const std::string& path :
       std::vector<std::string>{"", "/", "///", ".", "..", "/.", "/..", "a/.", "a/..", "a/../", "./"})
    EXPECT_EQ(codeOf(fileSystem_.locate(path)), posix::kInvalidArgument) << path;
  EXPECT_EQ(codeOf(fileSystem_.locate(std::string("/etc\0x", 6))), posix::kInvalidArgument);
}

TEST_P(LocateContract, FollowsLinksOnTheWayButNotTheLast) {
  folder_.makeFolder("real");
  folder_.makeFile("real/file");
  folder_.makeLink("way", "real");
  folder_.makeLink("real/link", "file");
  const auto location = fileSystem_.locate(folder_.path("way/link/"));
  ASSERT_TRUE(location);
  EXPECT_EQ(location->name, "link");
  EXPECT_TRUE(location->folder->statusOf("link", FollowLinks::No)->isSymbolicLink());
  EXPECT_EQ(location->folder->status()->inode, tests::statusOfObject(folder_.path("real")).st_ino);
}

TEST_P(LocateContract, TellsWhyThereIsNoFolder) {
  folder_.makeFile("file");
  folder_.makeLink("loop", "loop");
  EXPECT_EQ(codeOf(fileSystem_.locate(folder_.path("missing/x"))), posix::kNoEntry);
  EXPECT_EQ(codeOf(fileSystem_.locate(folder_.path("file/x"))), posix::kNotDirectory);
  EXPECT_EQ(codeOf(fileSystem_.locate(folder_.path("loop/x"))), posix::kTooManyLinks);
  EXPECT_EQ(codeOf(fileSystem_.locate(folder_.path(std::string(300, 'x') + "/x"))), posix::kNameTooLong);
}

TEST_P(LocateContract, APlaceIsNamedInButNotEnumerated) {
  folder_.makeFile("file", "12345");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "file");
  const auto location = fileSystem_.locate(folder_.path("file"));
  ASSERT_TRUE(location);
  auto& place = *location->folder;
  EXPECT_EQ(codeOf(place.next()), posix::kBadDescriptor);
  place.rewind();
  EXPECT_EQ(codeOf(place.next()), posix::kBadDescriptor);

  EXPECT_TRUE(place.status()->isDirectory());
  EXPECT_TRUE(place.openObject("file", FollowLinks::No));
  EXPECT_TRUE(place.openDirectory("folder", MountPoints::Refuse));
  EXPECT_TRUE(place.openDirectory("folder", MountPoints::Enter));
  EXPECT_TRUE(place.openParent());
  EXPECT_EQ(place.readLinkOf("link").value(), "file");
  EXPECT_TRUE(place.openFile("file"));
  EXPECT_TRUE(place.createFile("new", 0600));
  EXPECT_EQ(codeOf(place.makeDirectory("made", 0700)), 0);
  EXPECT_EQ(codeOf(place.makeSymbolicLink("made-link", "x")), 0);
  EXPECT_EQ(codeOf(place.makeLink("second", place, "file")), 0);
  EXPECT_EQ(codeOf(place.rename("second", place, "third")), 0);
  EXPECT_EQ(codeOf(place.setPermissionsOf("third", 0640)), 0);
  EXPECT_EQ(codeOf(place.setOwnerOf("third", geteuid(), getegid())), 0);
  EXPECT_EQ(place.ownPermissionsOf("third", *place.statusOf("third", FollowLinks::No)).value(), 0640);
  EXPECT_EQ(codeOf(place.setFlags(0)), 0);
  EXPECT_EQ(codeOf(place.setFlagsOf("third", 0, FollowLinks::No)), 0);
  EXPECT_EQ(codeOf(place.synchronize()), 0);
  EXPECT_EQ(codeOf(place.removeFile("third")), 0);
  EXPECT_EQ(codeOf(place.removeDirectory("made")), 0);
}

class LocateContractAsRoot : public tests::FileSystemContractBase {
 protected:
  void SetUp() override { needRoot("only root may set the immutable flag"); }
};
INSTANTIATE_TEST_SUITE_P(All, LocateContractAsRoot, tests::fileSystemImplementations(), tests::implementationName);

TEST_P(LocateContractAsRoot, SetsTheFlagsOfAPlace) {
  folder_.makeFolder("place");
  folder_.makeFile("place/file");
  const auto location = fileSystem_.locate(folder_.path("place/file"));
  ASSERT_TRUE(location);
  EXPECT_EQ(codeOf(location->folder->setFlags(host::file_flags::kUserImmutable)), 0);
  EXPECT_EQ(location->folder->status()->flags, host::file_flags::kUserImmutable);
  EXPECT_EQ(codeOf(location->folder->removeFile("file")), posix::kNotPermitted);
  EXPECT_EQ(codeOf(location->folder->setFlags(0)), 0);
  EXPECT_EQ(codeOf(location->folder->removeFile("file")), 0);
}

// A folder without permission to read serves as a place, for whoever may search it.
TEST_P(LocateContractAsRoot, TheFolderNeedNotBeReadable) {
  folder_.makeFolder("place");
  folder_.makeFile("place/file");
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(folder_.path("place").c_str(), 0711), 0);
  ASSERT_EQ(seteuid(65534), 0);
  const auto location = fileSystem_.locate(folder_.path("place/file"));
  const auto opened = fileSystem_.openDirectory(folder_.path("place"), FollowLinks::No);
  const bool isThere = location && location->folder->statusOf("file", FollowLinks::No).has_value();
  ASSERT_EQ(seteuid(0), 0);
  EXPECT_TRUE(isThere);
  EXPECT_EQ(codeOf(opened), posix::kAccessDenied);
}

}  // namespace
}  // namespace vantrell
