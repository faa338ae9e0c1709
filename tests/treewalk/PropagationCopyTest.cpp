// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Copy mode: the folder's own list, owner, group and mode for everything below it.

#include <linux/fs.h>

#include "tests/support/DeepTree.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/treewalk/PropagationFixture.h"

namespace vantrell {
namespace {

using namespace tests;

class PropagationCopyAsRoot : public PropagationFixture {};

TEST_F(PropagationCopyAsRoot, CopiesModeClassesAsFoldersAndFilesNeedThem) {
  setMode(top_, 0750);
  const auto program = makeFile("program", 0755);
  const auto file = makeFile("file", 0644);
  const auto folder = makeFolder("folder", 0777);
  const auto inner = makeFile("folder/inner", 0);
  EXPECT_EQ(propagate(0x0e), std::nullopt);
  EXPECT_EQ(modeOf(program), 0751U);
  EXPECT_EQ(modeOf(file), 0640U);
  EXPECT_EQ(modeOf(folder), 0750U);
  EXPECT_EQ(modeOf(inner), 0640U);
}

TEST_F(PropagationCopyAsRoot, ObeysEveryCombinationOfOptions) {
  constexpr unsigned kSourceMode = 0752;
  setOwner(top_, kOwner, kGroup);
  setMode(top_, kSourceMode);
  setfacl({"-m", "u:5:rwx,d:u:5:r", top_});
  const auto file = makeFile("file");
  const auto folder = makeFolder("folder");
  for (unsigned options = 0; options < 0x40; ++options) {
    for (const auto& object : {file, folder}) {
      setfacl({"-b", object});
      setOwner(object, 0, 0);
      setMode(object, object == file ? 0417 : 0136);
    }
    for (const unsigned locks : {0U, 0x40U}) EXPECT_EQ(propagate(options | locks), std::nullopt) << options;
    const unsigned asked = (options & 0x08 ? 0700U : 0U) | (options & 0x04 ? 070U : 0U) | (options & 0x02 ? 07U : 0U);
    for (const auto& object : {file, folder}) {
      const bool isFolder = object == folder;
      const unsigned classes = isFolder ? asked : asked & 0666;
      const unsigned mode = ((isFolder ? 0136U : 0417U) & ~classes) | (kSourceMode & classes);
      EXPECT_EQ(statusOf(object).st_uid, options & 0x20 ? kOwner : 0U) << options;
      EXPECT_EQ(statusOf(object).st_gid, options & 0x10 ? kGroup : 0U) << options;
      EXPECT_EQ(hasAccessList(object), (options & 0x01) != 0) << options;
      EXPECT_EQ(hasDefaultList(object), isFolder && (options & 0x01) != 0) << options;
      const auto list = getfacl(object);
      const unsigned group = mode >> 3 & 7;
      const std::string groupText = {group & 4 ? 'r' : '-', group & 2 ? 'w' : '-', group & 1 ? 'x' : '-'};
      EXPECT_NE(list.find(",group::" + groupText), std::string::npos) << options << " " << list;
      EXPECT_EQ(modeOf(object) & 0707, mode & 0707) << options;
    }
  }
}

TEST_F(PropagationCopyAsRoot, PutsItsOwnListInPlaceOfOthers) {
  setfacl({"-m", "u:5:rwx,g:6:rx", top_});
  const auto file = makeFile("file", 0640);
  const auto folder = makeFolder("folder", 0700);
  setfacl({"-m", "u:7:rwx", file});
  setfacl({"-m", "u:7:rwx,d:u:8:rwx", folder});
  EXPECT_EQ(propagate(0x01), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rw-,user:5:rwx,group::r--,group:6:r-x,mask::rwx,other::---");
  EXPECT_EQ(getfacl(folder), "user::rwx,user:5:rwx,group::---,group:6:r-x,mask::rwx,other::---");
}

TEST_F(PropagationCopyAsRoot, RemovesListsBelowAFolderWithoutOne) {
  const auto file = makeFile("file", 0640);
  const auto folder = makeFolder("folder", 0750);
  const auto inner = makeFile("folder/inner", 0644);
  setfacl({"-m", "u:7:rwx", file});
  setfacl({"-m", "u:7:rwx,d:u:8:rwx", folder});
  setfacl({"-m", "g:7:rwx", inner});
  EXPECT_EQ(propagate(0x01), std::nullopt);
  for (const auto& object : {file, folder, inner}) {
    EXPECT_FALSE(hasAccessList(object));
    EXPECT_FALSE(hasDefaultList(object));
  }
  EXPECT_EQ(modeOf(file), 0640U);
  EXPECT_EQ(modeOf(folder), 0750U);
  EXPECT_EQ(modeOf(inner), 0644U);
}

// A list's mask stands where the group's bits are. It is neither taken for them nor left in their place.
TEST_F(PropagationCopyAsRoot, TellsTheGroupsBitsFromAListsMask) {
  setMode(top_, 0750);
  setfacl({"-m", "u:5:rwx", top_});
  ASSERT_EQ(modeOf(top_), 0770U);
  const auto file = makeFile("file", 0604);
  const auto folder = makeFolder("folder", 0);
  EXPECT_EQ(propagate(0x0e), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rw-,group::r--,other::---");
  EXPECT_EQ(getfacl(folder), "user::rwx,group::r-x,other::---");
}

TEST_F(PropagationCopyAsRoot, KeepsWhatAnotherListGrantsWhenItCopiesModes) {
  setMode(top_, 0700);
  const auto file = makeFile("file", 0664);
  setfacl({"-m", "u:7:rw", file});
  EXPECT_EQ(propagate(0x0e), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rw-,user:7:rw-,group::---,mask::rw-,other::---");
}

TEST_F(PropagationCopyAsRoot, CopiesModesToWhatItJustTookAListFrom) {
  setMode(top_, 0750);
  const auto file = makeFile("file", 0644);
  const auto wide = makeFile("wide", 0604);
  for (const auto& object : {file, wide}) setfacl({"-m", "u:7:rwx", object});
  EXPECT_EQ(propagate(0x0f), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rw-,group::r--,other::---");
  EXPECT_EQ(getfacl(wide), "user::rw-,group::r--,other::---");
  EXPECT_EQ(modeOf(file), 0640U);
}

TEST_F(PropagationCopyAsRoot, IsCopyModeWhereReinheritanceIsAskedForAsWell) {
  setfacl({"-m", "d:u:5:rwx", top_});
  const auto file = makeFile("file");
  setfacl({"-m", "u:7:rwx", file});
  EXPECT_EQ(propagate(0x81), std::nullopt);
  EXPECT_FALSE(hasAccessList(file));  // the folder's own list names nobody
  EXPECT_EQ(feedback_.messages, progress({1.0}));
}

TEST_F(PropagationCopyAsRoot, NeverGivesAwayWhatRunsAsItsOwner) {
  setOwner(top_, kOwner, kGroup);
  const auto folder = makeFolder("folder");
  for (const unsigned mode : {04755U, 02755U, 06711U}) {
    const auto program = makeFile("folder/program", mode);
    for (const unsigned options : {0x20U, 0x10U, 0x30U, 0x3fU}) {
      EXPECT_EQ(propagate(options), guardError(program));
      EXPECT_EQ(statusOf(program).st_uid, 0U);
      EXPECT_EQ(modeOf(program) & 07000, mode & 07000);
      setfacl({"-b", program});
    }
  }
}

TEST_F(PropagationCopyAsRoot, RefusesAProgramThatHasTheOwnerAlready) {
  const auto program = makeFile("program", 04755);
  EXPECT_EQ(propagate(0x20), guardError(program));
  std::filesystem::remove(program);
  const auto folder = makeFolder("folder", 02775);
  EXPECT_EQ(propagate(0x10), guardError(folder));
}

TEST_F(PropagationCopyAsRoot, KeepsSpecialBits) {
  setMode(top_, 0750);
  setfacl({"-m", "u:5:rwx", top_});
  const auto program = makeFile("program", 06755);
  const auto shared = makeFolder("shared", 03777);
  EXPECT_EQ(propagate(0x0f), std::nullopt);
  EXPECT_EQ(modeOf(program) & 07707, 06701U);
  EXPECT_EQ(modeOf(shared) & 07707, 03700U);
  setMode(top_, 07750);
  const auto file = makeFile("file", 0644);
  EXPECT_EQ(propagate(0x0e), std::nullopt);
  EXPECT_EQ(modeOf(file), 0640U);
}

TEST_F(PropagationCopyAsRoot, GivesLinksAwayAndLeavesTheirTargetsAlone) {
  setOwner(top_, kOwner, kGroup);
  setMode(top_, 0700);
  setfacl({"-m", "u:5:rwx", top_});
  const auto outside = folder_.makeFile("outside");
  setMode(outside, 0644);
  const auto link = folder_.makeLink("top/link", outside);
  const auto dangling = folder_.makeLink("top/dangling", "nowhere");
  EXPECT_EQ(propagate(0x3f), std::nullopt);
  EXPECT_EQ(statusOf(link).st_uid, kOwner);
  EXPECT_EQ(statusOf(dangling).st_gid, kGroup);
  EXPECT_EQ(modeOf(link), 0777U);
  EXPECT_EQ(statusOf(outside).st_uid, 0U);
  EXPECT_EQ(getfacl(outside), "user::rw-,group::r--,other::r--");
}

TEST_F(PropagationCopyAsRoot, ReachesPipesToo) {
  setOwner(top_, kOwner, kGroup);
  setMode(top_, 0700);
  setfacl({"-m", "u:5:rw", top_});
  ASSERT_EQ(mkfifo(path("pipe").c_str(), 0644), 0);
  EXPECT_EQ(propagate(0x3f), std::nullopt);
  EXPECT_EQ(statusOf(path("pipe")).st_uid, kOwner);
  EXPECT_EQ(getfacl(path("pipe")), "user::rw-,user:5:rw-,group::---,mask::rw-,other::---");
}

TEST_F(PropagationCopyAsRoot, SkipsLockedObjectsWhenAskedAndCountsThem) {
  setOwner(top_, kOwner, kGroup);
  setfacl({"-m", "u:5:rwx", top_});
  for (int i = 0; i < 99; ++i) makeFile("file " + std::to_string(i));
  const auto locked = makeFile("locked", 0600);
  addInodeFlags(locked, FS_IMMUTABLE_FL);
  EXPECT_EQ(propagate(0x7f, 100), std::nullopt);
  EXPECT_EQ(statusOf(locked).st_uid, 0U);
  EXPECT_FALSE(hasAccessList(locked));
  EXPECT_EQ(modeOf(locked), 0600U);
  EXPECT_EQ(statusOf(path("file 42")).st_uid, kOwner);
  EXPECT_EQ(feedback_.messages, progress({1.0, 1.0}));
}

TEST_F(PropagationCopyAsRoot, ChangesWhatALockedFolderHoldsWhenItIsSkipped) {
  setOwner(top_, kOwner, kGroup);
  const auto folder = makeFolder("folder");
  const auto file = makeFile("folder/file");
  addInodeFlags(folder, FS_IMMUTABLE_FL);
  EXPECT_EQ(propagate(0x70), std::nullopt);
  EXPECT_EQ(statusOf(folder).st_uid, 0U);
  EXPECT_EQ(statusOf(file).st_uid, kOwner);
}

TEST_F(PropagationCopyAsRoot, FailsAtLockedObjectsByTheFirstStepAskedFor) {
  setOwner(top_, kOwner, kGroup);
  setMode(top_, 0700);
  setfacl({"-m", "u:5:rwx", top_});
  const auto locked = makeFile("locked");
  for (const unsigned flag : {FS_IMMUTABLE_FL, FS_APPEND_FL}) {
    setInodeFlags(locked, flag);
    EXPECT_EQ(propagate(0x3f), error12(locked));
    EXPECT_EQ(propagate(0x3e), error14(locked));
    EXPECT_EQ(propagate(0x0e), error15(locked));
    setInodeFlags(locked, 0);
  }
}

TEST_F(PropagationCopyAsRoot, FailsAtLockedObjectsThatLackNothing) {
  const auto locked = makeFile("locked", 0755);
  addInodeFlags(locked, FS_IMMUTABLE_FL);
  EXPECT_EQ(propagate(0x3f), error12(locked));
  EXPECT_EQ(propagate(0x3e), error14(locked));
  EXPECT_EQ(propagate(0x0e), error15(locked));
  EXPECT_EQ(propagate(0x7f), std::nullopt);
}

TEST_F(PropagationCopyAsRoot, SaysWhyTheFileSystemTakesNoChange) {
  MountedFileSystem memory(top_);
  setOwner(top_, kOwner, kGroup);
  setMode(top_, 0700);
  setfacl({"-m", "u:5:rwx", top_});
  const auto file = makeFile("file");
  memory.makeReadOnly();
  EXPECT_EQ(propagate(0x3f), error12(file, posix::kReadOnlyFileSystem));
  EXPECT_EQ(propagate(0x3e), error14(file, posix::kReadOnlyFileSystem));
  EXPECT_EQ(propagate(0x0e), error15(file, posix::kReadOnlyFileSystem));
}

TEST_F(PropagationCopyAsRoot, WritesNothingWhereAllIsAsAsked) {
  setOwner(top_, kOwner, kGroup);
  setMode(top_, 0750);
  setfacl({"-m", "u:5:rwx,d:u:5:r", top_});
  const auto file = makeFile("file");
  const auto folder = makeFolder("folder");
  const auto link = folder_.makeLink("top/link", "file");
  EXPECT_EQ(propagate(0x3f), std::nullopt);
  std::vector<timespec> before;
  for (const auto& object : {file, folder, link}) before.push_back(statusOf(object).st_ctim);
  usleep(20'000);
  EXPECT_EQ(propagate(0x3f), std::nullopt);
  std::size_t index = 0;
  for (const auto& object : {file, folder, link}) {
    const auto after = statusOf(object).st_ctim;
    EXPECT_EQ(after.tv_sec, before[index].tv_sec) << object;
    EXPECT_EQ(after.tv_nsec, before[index++].tv_nsec) << object;
  }
}

TEST_F(PropagationCopyAsRoot, EndsAtTheFirstFailure) {
  setOwner(top_, kOwner, kGroup);
  for (int i = 0; i < 50; ++i) makeFile("program " + std::to_string(i), 04755);
  const auto error = propagate(0x21);
  ASSERT_TRUE(error);
  EXPECT_TRUE(error->isPosix(posix::kInvalidArgument));
}

TEST_F(PropagationCopyAsRoot, ReportsEveryHundredthObjectUnclamped) {
  for (int i = 0; i < 250; ++i) makeFile(std::to_string(i));
  EXPECT_EQ(propagate(0x01, 80), std::nullopt);
  EXPECT_EQ(feedback_.messages, progress({1.25, 2.5, 1.0}));
  EXPECT_EQ(looks_, 2);
  feedback_.messages.clear();
  EXPECT_EQ(propagate(0x01, 0), std::nullopt);
  EXPECT_EQ(feedback_.messages, progress({100.0, 200.0, 1.0}));
}

TEST_F(PropagationCopyAsRoot, EndsAtAHundredthObjectWhenCancelled) {
  setOwner(top_, kOwner, kGroup);
  for (int i = 0; i < 500; ++i) makeFile(std::to_string(i));
  cancelAfter_ = 1;
  EXPECT_EQ(propagate(0x20, 1000), Error::posix(posix::kCanceled));
  EXPECT_EQ(feedback_.messages, progress({0.1}));
  int changed = 0;
  for (int i = 0; i < 500; ++i) changed += statusOf(path(std::to_string(i))).st_uid == kOwner;
  EXPECT_EQ(changed, 200);
}

TEST_F(PropagationCopyAsRoot, StaysOnTheFoldersFileSystem) {
  setOwner(top_, kOwner, kGroup);
  const auto mounted = makeFolder("mounted");
  const MountedFileSystem memory(mounted);
  const auto inside = makeFile("mounted/file");
  EXPECT_EQ(propagate(0x20), std::nullopt);
  EXPECT_EQ(statusOf(mounted).st_uid, kOwner);  // the walk hands it out
  EXPECT_EQ(statusOf(inside).st_uid, 0U);
}

TEST_F(PropagationCopyAsRoot, TakesNamesThatAreNoText) {
  setOwner(top_, kOwner, kGroup);
  const auto odd = makeFile("odd\xff\xfename");
  EXPECT_EQ(propagate(0x3f), std::nullopt);
  EXPECT_EQ(statusOf(odd).st_uid, kOwner);
  setMode(odd, 04755);
  EXPECT_EQ(propagate(0x20), guardError(path("odd\uFFFD\uFFFDname")));
}

}  // namespace
}  // namespace vantrell
