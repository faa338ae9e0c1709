// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Setting one object's list; and what both ways of propagating have in common.

#include <linux/fs.h>
#include <sys/mount.h>

#include "tests/support/InodeFlags.h"
#include "tests/treewalk/PropagationFixture.h"

namespace vantrell {
namespace {

using namespace tests;

class RamFileSystem {
 public:
  explicit RamFileSystem(std::string folder) : folder_(std::move(folder)) {
    if (mount("none", folder_.c_str(), "ramfs", 0, "") != 0) throw std::runtime_error("no ramfs on " + folder_);
  }
  RamFileSystem(const RamFileSystem&) = delete;
  RamFileSystem& operator=(const RamFileSystem&) = delete;
  ~RamFileSystem() { umount2(folder_.c_str(), MNT_DETACH); }

 private:
  std::string folder_;
};

class ModifyAclAsRoot : public PropagationFixture {
 protected:
  // The external form of the list that these entries make.
  Data formOf(const std::string& entries, bool isFolder = false) {
    const auto model = isFolder ? folder_.makeFolder("model") : folder_.makeFile("model file");
    setfacl({"-b", model});
    setfacl({"-m", entries, model});
    auto object = fileSystem_.openObject(model, host::FollowLinks::No);
    return (*(*object)->accessControlList())->externalForm();
  }
  ErrorOrNil modify(const std::string& path, const Data& data) { return operations_.modifyAcl({path, data}); }
};

TEST_F(ModifyAclAsRoot, RefusesArgumentsThatMakeNoSense) {
  const auto file = makeFile("file");
  const Value form = formOf("u:1234:rw");
  const Value text = file;
  for (const Array& arguments : {Array{}, Array{text}, Array{"", form}, Array{text, Data{}}, Array{text, "text"},
                                 Array{5, form}, Array{text, Value(Null())}})
    EXPECT_EQ(operations_.modifyAcl(arguments), Error::posix(posix::kInvalidArgument));
  EXPECT_FALSE(hasAccessList(file));
}

TEST_F(ModifyAclAsRoot, RefusesDataThatIsNoList) {
  const auto file = makeFile("file");
  const auto form = formOf("u:1234:rw,g:77:r");
  for (std::size_t length = 1; length < form.size(); ++length)
    EXPECT_EQ(modify(file, Data(form.begin(), form.begin() + static_cast<std::ptrdiff_t>(length))),
              Error::posix(posix::kInvalidArgument))
        << length;
  auto longer = form;
  longer.push_back(0);
  EXPECT_EQ(modify(file, longer), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(modify(file, Data(4096, 0xff)), Error::posix(posix::kInvalidArgument));
  EXPECT_FALSE(hasAccessList(file));
}

TEST_F(ModifyAclAsRoot, JudgesTheDataBeforeItLooksForTheObject) {
  EXPECT_EQ(modify(path("missing"), Data(10, 0xff)), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(modify(path("missing"), formOf("u:1234:rw")), Error::posix(posix::kNoEntry));
}

TEST_F(ModifyAclAsRoot, SetsTheListBesideOwnerGroupAndMode) {
  const auto file = makeFile("file", 0640);
  EXPECT_EQ(modify(file, formOf("u:1234:rwx,g:77:x")), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rw-,user:1234:rwx,group::r--,group:77:--x,mask::rwx,other::---");
  EXPECT_EQ(modify(file, formOf("u:9:r")), std::nullopt);
  EXPECT_EQ(getfacl(file), "user::rw-,user:9:r--,group::r--,mask::r--,other::---");
}

TEST_F(ModifyAclAsRoot, GivesAFolderWhatItHandsOn) {
  const auto folder = makeFolder("folder", 0750);
  EXPECT_EQ(modify(folder, formOf("u:1234:rwx,d:u:1234:r", true)), std::nullopt);
  EXPECT_TRUE(hasDefaultList(folder));
  EXPECT_NE(getfacl(folder).find("user::rwx,user:1234:rwx,group::r-x,mask::rwx,other::---,default:user::"),
            std::string::npos);
  const auto file = makeFile("file");
  EXPECT_EQ(modify(file, formOf("u:1234:rwx,d:u:1234:r", true)), std::nullopt);
  EXPECT_FALSE(hasDefaultList(file));
}

TEST_F(ModifyAclAsRoot, FollowsLinks) {
  const auto file = makeFile("file");
  folder_.makeLink("top/link", "file");
  folder_.makeLink("top/dangling", "nowhere");
  EXPECT_EQ(modify(path("link"), formOf("u:1234:rw")), std::nullopt);
  EXPECT_TRUE(hasAccessList(file));
  EXPECT_EQ(modify(path("dangling"), formOf("u:1234:rw")), Error::posix(posix::kNoEntry));
}

TEST_F(ModifyAclAsRoot, SaysWhatTheSystemSays) {
  const auto form = formOf("u:1234:rw");
  const auto locked = makeFile("locked");
  addInodeFlags(locked, FS_IMMUTABLE_FL);
  EXPECT_EQ(modify(locked, form), Error::posix(posix::kNotPermitted));
  const RamFileSystem plain(makeFolder("ram"));
  EXPECT_EQ(modify(makeFile("ram/file"), form), Error::posix(posix::kNotSupported));
}

class PropPermissionsAsRoot : public PropagationFixture {};

TEST_F(PropPermissionsAsRoot, RefusesArgumentsThatMakeNoSense) {
  const Value folder = top_;
  for (const Array& arguments : {Array{}, Array{folder}, Array{folder, 1U}, Array{"", 1U, 0x3fU},
                                 Array{folder, "1", 0x3fU}, Array{folder, 1U, "63"}, Array{5U, 1U, 0x3fU}})
    EXPECT_EQ(operations_.propPermissions(arguments, &feedback_, nullptr), Error::posix(posix::kInvalidArgument));
  EXPECT_TRUE(feedback_.messages.empty());
}

TEST_F(PropPermissionsAsRoot, WantsAFolder) {
  makeFile("file");
  folder_.makeLink("top/to file", "file");
  folder_.makeLink("top/dangling", "nowhere");
  for (const unsigned options : {0x3fU, 0x80U}) {
    EXPECT_EQ(propagateIn(path("missing"), options), Error::posix(posix::kNoEntry));
    EXPECT_EQ(propagateIn(path("dangling"), options), Error::posix(posix::kNoEntry));
    EXPECT_EQ(propagateIn(path("file"), options), Error::posix(posix::kNotDirectory));
    EXPECT_EQ(propagateIn(path("to file"), options), Error::posix(posix::kNotDirectory));
  }
  EXPECT_TRUE(feedback_.messages.empty());
}

TEST_F(PropPermissionsAsRoot, FollowsALinkToTheFolderAndNamesWhatItLedTo) {
  const auto program = makeFile("program", 04755);
  const auto link = folder_.makeLink("link", "top");
  setOwner(top_, kOwner, kGroup);
  EXPECT_EQ(propagateIn(link, 0x20), guardError(program));
  setMode(program, 0755);
  EXPECT_EQ(propagateIn(link, 0x20), std::nullopt);
  EXPECT_EQ(statusOf(program).st_uid, kOwner);
}

TEST_F(PropPermissionsAsRoot, FailsBeforeAnyChangeWhereListsCannotBeRead) {
  const RamFileSystem plain(top_);
  setOwner(top_, kOwner, kGroup);
  const auto file = makeFile("file");
  for (const unsigned options : {0U, 0x01U, 0x30U, 0x3fU, 0x80U, 0xb0U})
    EXPECT_EQ(propagate(options), error23(top_, posix::kNotSupported));
  EXPECT_EQ(statusOf(file).st_uid, 0U);
  EXPECT_TRUE(feedback_.messages.empty());
}

TEST_F(PropPermissionsAsRoot, LeavesTheFolderItselfAsItIs) {
  setOwner(top_, kOwner, kGroup);
  setfacl({"-m", "u:5:rwx,d:u:5:r", top_});
  setMode(top_, 01777);
  const auto before = statusOf(top_);
  const auto list = getfacl(top_);
  EXPECT_EQ(propagate(0x3f), std::nullopt);
  EXPECT_EQ(propagate(0xbe), std::nullopt);
  EXPECT_EQ(statusOf(top_).st_mode, before.st_mode);
  EXPECT_EQ(statusOf(top_).st_uid, before.st_uid);
  EXPECT_EQ(getfacl(top_), list);
}

TEST_F(PropPermissionsAsRoot, ReportsTheEndAlsoOfAFailure) {
  makeFile("program", 04755);
  setOwner(top_, kOwner, kGroup);
  EXPECT_EQ(propagate(0x20), guardError(path("program")));
  EXPECT_EQ(feedback_.messages, progress({1.0}));
}

TEST_F(PropPermissionsAsRoot, ReadsEightOptionBits) {
  setfacl({"-m", "u:5:rwx", top_});
  const auto file = makeFile("file");
  EXPECT_EQ(propagate(0x100), std::nullopt);
  EXPECT_FALSE(hasAccessList(file));
  EXPECT_EQ(propagate(0x101), std::nullopt);
  EXPECT_TRUE(hasAccessList(file));
}

TEST_F(PropPermissionsAsRoot, WorksWithoutFeedbackAndCancellation) {
  setOwner(top_, kOwner, kGroup);
  const auto file = makeFile("file");
  for (const unsigned options : {0x30U, 0xb0U}) {
    setOwner(file, 0, 0);
    EXPECT_EQ(operations_.propPermissions({top_, 1U, options}, nullptr, nullptr), std::nullopt);
    EXPECT_EQ(statusOf(file).st_gid, kGroup);
  }
}

}  // namespace
}  // namespace vantrell
