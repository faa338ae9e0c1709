// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Re-inheritance mode: every object gets the list that its folder hands on.

#include <linux/fs.h>

#include "tests/support/DeepTree.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/treewalk/PropagationFixture.h"
#include "treewalk/AclReinheritance.h"

namespace vantrell {
namespace {

using namespace tests;

class AclReinheritanceAsRoot : public PropagationFixture {
 protected:
  // What the top hands on, it does so from this moment on only: what a test made before has nothing yet.
  ErrorOrNil reinherit(unsigned options, std::uint64_t expected = 1) {
    if (handsOn_) setfacl({"-m", "d:u:5:rwx,d:g:6:rx,d:u::rwx,d:g::rx,d:o::-", top_});
    return propagate(options, expected);
  }

  // Every entry of the tree but what the test made itself.
  std::vector<std::string> namesIn(const std::string& folder) const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
  }

  bool handsOn_ = true;
};

TEST_F(AclReinheritanceAsRoot, HandsTheInheritableEntriesDown) {
  const auto file = makeFile("file", 0640);
  const auto folder = makeFolder("folder", 0700);
  const auto inner = makeFile("folder/inner", 0600);
  const auto deep = makeFolder("folder/deep", 0755);
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rw-,user:5:rwx,group::r--,group:6:r-x,mask::rwx,other::---");
  EXPECT_EQ(getfacl(inner), "user::rw-,user:5:rwx,group::---,group:6:r-x,mask::rwx,other::---");
  const std::string handedOn =
      "default:user::rwx,default:user:5:rwx,default:group::r-x,default:group:6:r-x,default:mask::rwx,default:other::--"
      "-";
  EXPECT_EQ(getfacl(folder), "user::rwx,user:5:rwx,group::---,group:6:r-x,mask::rwx,other::---," + handedOn);
  EXPECT_EQ(getfacl(deep), "user::rwx,user:5:rwx,group::r-x,group:6:r-x,mask::rwx,other::r-x," + handedOn);
}

TEST_F(AclReinheritanceAsRoot, LeavesNothingBehind) {
  makeFile("file");
  makeFolder("folder");
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  EXPECT_EQ(namesIn(top_), (std::vector<std::string>{"file", "folder"}));
  EXPECT_TRUE(namesIn(path("folder")).empty());
}

TEST_F(AclReinheritanceAsRoot, RemovesListsWhereNothingIsHandedOn) {
  handsOn_ = false;
  setfacl({"-m", "u:9:rwx", top_});
  const auto file = makeFile("file", 0640);
  const auto folder = makeFolder("folder", 0750);
  const auto inner = makeFile("folder/inner", 0604);
  setfacl({"-m", "u:7:rwx", file});
  setfacl({"-m", "u:7:rwx,d:u:8:rwx", folder});
  setfacl({"-m", "u:7:rwx", inner});
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rw-,group::r--,other::---");
  EXPECT_EQ(getfacl(folder), "user::rwx,group::r-x,other::---");
  EXPECT_EQ(getfacl(inner), "user::rw-,group::---,other::r--");
}

TEST_F(AclReinheritanceAsRoot, CopiesOwnerGroupAndModeWhenAsked) {
  setOwner(top_, kOwner, kGroup);
  setMode(top_, 0750);
  const auto file = makeFile("file", 0755);
  const auto folder = makeFolder("folder", 0777);
  const auto inner = makeFile("folder/inner", 0644);
  EXPECT_EQ(reinherit(0x80 | 0x3e), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rwx,user:5:rwx,group::r-x,group:6:r-x,mask::rwx,other::--x");
  EXPECT_EQ(getfacl(inner), "user::rw-,user:5:rwx,group::r--,group:6:r-x,mask::rwx,other::---");
  EXPECT_EQ(getfacl(folder).substr(0, 71), "user::rwx,user:5:rwx,group::r-x,group:6:r-x,mask::rwx,other::---,defaul");
  for (const auto& object : {file, folder, inner}) {
    EXPECT_EQ(statusOf(object).st_uid, kOwner);
    EXPECT_EQ(statusOf(object).st_gid, kGroup);
  }
}

TEST_F(AclReinheritanceAsRoot, SetsListsWithoutTheirBitToo) {
  const auto file = makeFile("file");
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  EXPECT_TRUE(hasAccessList(file));
  EXPECT_EQ(statusOf(file).st_uid, 0U);
  EXPECT_EQ(modeOf(file) & 0707, 0604U);
}

TEST_F(AclReinheritanceAsRoot, TouchesFilesAndFoldersOnly) {
  setOwner(top_, kOwner, kGroup);
  const auto outside = folder_.makeFile("outside");
  const auto outsideFolder = folder_.makeFolder("outside folder");
  const auto link = folder_.makeLink("top/link", outside);
  const auto folderLink = folder_.makeLink("top/folder link", outsideFolder);
  const auto companionLink = folder_.makeLink("top/._file", outside);
  makeFile("file");
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0644), 0);
  EXPECT_EQ(reinherit(0x80 | 0x3e), std::nullopt);
  for (const auto& object : {link, folderLink, companionLink, path("pipe"), outside, outsideFolder})
    EXPECT_EQ(statusOf(object).st_uid, 0U) << object;
  EXPECT_FALSE(hasAccessList(path("pipe")));
  EXPECT_FALSE(hasAccessList(outside));
  EXPECT_FALSE(hasAccessList(outsideFolder));
}

TEST_F(AclReinheritanceAsRoot, TakesCompanionsWithTheirFilesAndByThemselves) {
  makeFile("file");
  const auto companion = makeFile("._file");
  makeFile("other");
  makeFolder("._other");
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  EXPECT_TRUE(hasAccessList(companion));
  EXPECT_TRUE(hasDefaultList(path("._other")));
  // file, its companion, the companion by itself, other; the folder; and the folder's own two reports.
  EXPECT_EQ(feedback_.messages, progress({4.0, 5.0, 5.0, 5.0, 1.0}));
}

TEST_F(AclReinheritanceAsRoot, ReportsTwiceForEachFolderUnclamped) {
  makeFile("1");
  makeFile("2");
  makeFolder("folder");
  makeFile("folder/3");
  EXPECT_EQ(reinherit(0x80, 2), std::nullopt);
  EXPECT_EQ(feedback_.messages, progress({1.0, 1.5, 2.0, 2.0, 1.0}));
  feedback_.messages.clear();
  EXPECT_EQ(reinherit(0x80, 0), std::nullopt);
  EXPECT_EQ(feedback_.messages, progress({2.0, 3.0, 4.0, 4.0, 1.0}));
}

TEST_F(AclReinheritanceAsRoot, LooksForCancellationAtItsPoints) {
  const auto file = makeFile("file");
  const auto folder = makeFolder("folder");
  const auto inner = makeFile("folder/inner");
  // Before the top's contents, after its files, after its folders; the same for the folder; and behind the folder.
  const std::vector<std::vector<double>> reports{{1.0},
                                                 {1.0, 1.0},
                                                 {1.0, 2.0, 1.0},
                                                 {1.0, 2.0, 1.0},
                                                 {1.0, 2.0, 3.0, 1.0},
                                                 {1.0, 2.0, 3.0, 3.0, 1.0},
                                                 {1.0, 2.0, 3.0, 3.0, 1.0}};
  for (int point = 0; point < 7; ++point) {
    for (const auto& object : {file, folder, inner}) setfacl({"-b", object});
    feedback_.messages.clear();
    looks_ = 0;
    cancelAfter_ = point;
    EXPECT_EQ(reinherit(0x80), Error::posix(posix::kCanceled)) << point;
    EXPECT_EQ(feedback_.messages, progress(reports[static_cast<std::size_t>(point)])) << point;
    EXPECT_EQ(hasAccessList(file), point >= 1) << point;
    EXPECT_EQ(hasAccessList(folder), point >= 2) << point;
    EXPECT_EQ(hasAccessList(inner), point >= 4) << point;
  }
  looks_ = 0;
  cancelAfter_ = 7;
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  EXPECT_EQ(namesIn(top_), (std::vector<std::string>{"file", "folder"}));
}

TEST_F(AclReinheritanceAsRoot, FailsAtAProgramThatRunsAsItsOwner) {
  setOwner(top_, kOwner, kGroup);
  const auto program = makeFile("folder-less", 04755);
  EXPECT_EQ(reinherit(0x80 | 0x20), guardError(program));
  EXPECT_TRUE(hasAccessList(program));  // which comes first
  EXPECT_EQ(statusOf(program).st_uid, 0U);
  EXPECT_EQ(feedback_.messages, progress({1.0}));
  EXPECT_EQ(namesIn(top_), (std::vector<std::string>{"folder-less"}));
}

TEST_F(AclReinheritanceAsRoot, SkipsLockedObjectsWhenAskedWithoutCountingThem) {
  const auto file = makeFile("file");
  const auto locked = makeFile("locked");
  addInodeFlags(locked, FS_IMMUTABLE_FL);
  EXPECT_EQ(reinherit(0x80), error12(locked));
  feedback_.messages.clear();
  EXPECT_EQ(reinherit(0xc0), std::nullopt);
  EXPECT_TRUE(hasAccessList(file));
  EXPECT_FALSE(hasAccessList(locked));
  EXPECT_EQ(feedback_.messages, progress({1.0, 1.0, 1.0}));
}

// Nothing can be made in it, so that what it hands on can't be seen.
TEST_F(AclReinheritanceAsRoot, FailsInALockedFolder) {
  const auto folder = makeFolder("folder");
  addInodeFlags(folder, FS_IMMUTABLE_FL);
  const auto temporary = folder + "/" + PropagationTemporaryObject::candidateName(0);
  EXPECT_EQ(reinherit(0xc0), error23(temporary, posix::kNotPermitted));
}

TEST_F(AclReinheritanceAsRoot, FailsOnAReadOnlyFileSystem) {
  MountedFileSystem memory(top_);
  makeFile("file");
  memory.makeReadOnly();
  handsOn_ = false;
  EXPECT_EQ(reinherit(0x80), error23(path(PropagationTemporaryObject::candidateName(0)), posix::kReadOnlyFileSystem));
}

TEST_F(AclReinheritanceAsRoot, LeavesOtherFileSystemsAlone) {
  const auto mounted = makeFolder("mounted");
  const MountedFileSystem memory(mounted);
  const auto inside = makeFile("mounted/file");
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  EXPECT_FALSE(hasAccessList(mounted));
  EXPECT_FALSE(hasAccessList(inside));
  EXPECT_EQ(feedback_.messages, progress({0.0, 0.0, 1.0}));
}

TEST_F(AclReinheritanceAsRoot, ReachesTheBottomOfAVeryDeepTree) {
  constexpr int kLevels = 2000;
  const MountedFileSystem memory(top_);  // some disks' file systems are slow at making and removing again
  makeDeepTree(top_, kLevels, "d", true);
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  int folder = open(top_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int level = 0; level < kLevels; ++level) {
    const int file = openat(folder, "file", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    ASSERT_GT(fgetxattr(file, "system.posix_acl_access", nullptr, 0), 0) << level;
    close(file);
    const int inner = openat(folder, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    close(folder);
    folder = inner;
    ASSERT_GE(folder, 0);
    ASSERT_GT(fgetxattr(folder, "system.posix_acl_default", nullptr, 0), 0) << level;
  }
  close(folder);
}

TEST_F(AclReinheritanceAsRoot, TakesNamesThatAreNoText) {
  const auto folder = makeFolder("odd\xff");
  const auto file = makeFile("odd\xff/file\xfe", 04755);
  EXPECT_EQ(reinherit(0x80), std::nullopt);
  EXPECT_TRUE(hasAccessList(file));
  EXPECT_EQ(reinherit(0xa0), guardError(path("odd\uFFFD/file\uFFFD")));
}

TEST_F(AclReinheritanceAsRoot, WritesNothingWhereAllIsAsAsked) {
  const auto file = makeFile("file");
  EXPECT_EQ(reinherit(0xbe), std::nullopt);
  const auto before = statusOf(file).st_ctim;
  usleep(20'000);
  EXPECT_EQ(reinherit(0xbe), std::nullopt);
  EXPECT_EQ(statusOf(file).st_ctim.tv_sec, before.tv_sec);
  EXPECT_EQ(statusOf(file).st_ctim.tv_nsec, before.tv_nsec);
}

}  // namespace
}  // namespace vantrell
