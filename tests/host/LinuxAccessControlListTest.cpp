// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "host/posix/FileDescriptor.h"
#include "tests/host/FileSystemContract.h"
#include "tests/macho/ToolRunner.h"
#include "tests/support/MountedFileSystem.h"

namespace vantrell {
namespace {

using host::AccessControlList;
using host::FileType;
using host::FollowLinks;
using tests::codeOf;
using tests::permissionsOf;

using List = std::unique_ptr<AccessControlList>;

class AccessControlListContract : public tests::FileSystemContractBase {
 protected:
  void SetUp() override {
    VANTRELL_NEEDS_TOOL("setfacl");
    VANTRELL_NEEDS_TOOL("getfacl");
    if (getxattr(folder_.path().c_str(), "system.posix_acl_access", nullptr, 0) < 0 && errno == EOPNOTSUPP)
      GTEST_SKIP() << "the file system of " << folder_.path() << " has no access control lists";
  }

  /// Sets a list by setfacl's own words, past the code under test.
  void setfacl(const std::string& name, const std::string& entries) const {
    tests::runTool("setfacl", {"-m", entries, folder_.path(name)});
  }
  /// All entries in getfacl's order, comma-separated; a default list's behind "default:" each.
  std::string getfacl(const std::string& name) const {
    std::string text = tests::runTool("getfacl", {"-cnpE", folder_.path(name)});
    while (text.ends_with('\n')) text.pop_back();
    std::ranges::replace(text, '\n', ',');
    return text;
  }
  static bool isEmptyOrNone(const List& list) { return !list || list->isEmpty(); }

  List listOf(const std::string& name) { return object(name)->accessControlList().value(); }
  timespec changed(const std::string& name) const { return tests::statusOfObject(folder_.path(name)).st_ctim; }
  std::uint16_t ownPermissions(const std::string& name) {
    const auto handle = object(name);
    const auto status = handle->status().value();
    const auto own = handle->ownPermissions(status).value();
    EXPECT_EQ(open()->ownPermissionsOf(name.c_str(), status).value(), own);
    return own;
  }
};
INSTANTIATE_TEST_SUITE_P(All, AccessControlListContract, tests::fileSystemImplementations(), tests::implementationName);

TEST_P(AccessControlListContract, ThereIsNoneWhereThereIsOnlyAMode) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "file");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  for (const char* name : {"file", "folder", "link", "pipe"}) {
    EXPECT_EQ(listOf(name), nullptr) << name;
    EXPECT_EQ(open()->accessControlListOf(name).value(), nullptr) << name;
    EXPECT_EQ(open()->inheritedAccessControlListOf(name).value(), nullptr) << name;
    EXPECT_EQ(codeOf(object(name)->setAccessControlList(nullptr)), 0) << name;
  }
  EXPECT_EQ(codeOf(open()->accessControlListOf("missing")), posix::kNoEntry);
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("missing", nullptr)), posix::kNoEntry);
}

TEST_P(AccessControlListContract, AMaskAloneIsNoList) {
  folder_.makeFile("file");
  setfacl("file", "g::rw-,m::r--");
  EXPECT_EQ(listOf("file"), nullptr);
  EXPECT_EQ(ownPermissions("file"), 0644);
}

TEST_P(AccessControlListContract, ALinkHasNoneAndGetsNone) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  setfacl("file", "u:1000:r--");
  const auto list = listOf("file");
  ASSERT_FALSE(isEmptyOrNone(list));
  EXPECT_EQ(listOf("link"), nullptr);
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("link", list.get())), posix::kNotSupported);
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("link", nullptr)), posix::kNotSupported);
  EXPECT_EQ(codeOf(object("link")->setAccessControlList(list.get())), posix::kNotSupported);
  EXPECT_EQ(codeOf((*fileSystem_.openObject(folder_.path("link"), FollowLinks::Yes))->setAccessControlList(nullptr)),
            0);
  EXPECT_EQ(getfacl("file"), "user::rw-,group::r--,other::r--");
}

TEST_P(AccessControlListContract, WhereThereAreNoListsThatIsTold) {
  const auto status = fileSystem_.openObject("/proc/self/status", FollowLinks::No);
  ASSERT_TRUE(status);
  EXPECT_EQ(codeOf((*status)->accessControlList()), posix::kNotSupported);
  EXPECT_EQ(codeOf((*fileSystem_.openDirectory("/proc/self", FollowLinks::Yes))->accessControlListOf("status")),
            posix::kNotSupported);
  EXPECT_EQ(codeOf((*status)->setAccessControlList(nullptr)), 0);
  EXPECT_EQ((*status)->ownPermissions(*(*status)->status()).value(), (*status)->status()->permissions);
  folder_.makeFile("file");
  setfacl("file", "u:1000:r--");
  EXPECT_EQ(codeOf((*status)->setAccessControlList(listOf("file").get())), posix::kNotSupported);
}

TEST_P(AccessControlListContract, CarriesNamedEntriesBesideTheOwnersOfTheOther) {
  folder_.makeFile("source");
  folder_.makeFile("target");
  setfacl("source", "u:1000:rwx,u:7:---,g:1000:r-x,g:8:-w-");
  ASSERT_EQ(chmod(folder_.path("target").c_str(), 0651), 0);
  const auto list = listOf("source");
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(list.get())), 0);
  const std::string expected =
      "user::rw-,user:7:---,user:1000:rwx,group::r-x,group:8:-w-,group:1000:r-x,mask::rwx,other::--x";
  EXPECT_EQ(getfacl("target"), expected);
  EXPECT_EQ(permissionsOf(folder_.path("target")), 0671U);
  EXPECT_EQ(ownPermissions("target"), 0651);

  folder_.makeFile("by-name");
  ASSERT_EQ(chmod(folder_.path("by-name").c_str(), 0651), 0);
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("by-name", list.get())), 0);
  EXPECT_EQ(getfacl("by-name"), expected);
  EXPECT_EQ(open()->accessControlListOf("by-name").value()->externalForm(), list->externalForm());
}

TEST_P(AccessControlListContract, EntriesAreCarriedWithWhatTheirMaskLetsThrough) {
  folder_.makeFile("source");
  folder_.makeFile("target");
  setfacl("source", "u:1000:rwx,g:8:-wx,g::rwx,m::r-x");
  ASSERT_EQ(chmod(folder_.path("target").c_str(), 0600), 0);
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(listOf("source").get())), 0);
  EXPECT_EQ(getfacl("target"), "user::rw-,user:1000:r-x,group::---,group:8:--x,mask::r-x,other::---");
}

TEST_P(AccessControlListContract, NoRightOfTheOwningGroupWidens) {
  folder_.makeFile("source");
  folder_.makeFile("target");
  setfacl("source", "u:1000:rwx");
  setfacl("target", "u:5:rw-,g::rwx,m::r--");
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(listOf("source").get())), 0);
  EXPECT_EQ(getfacl("target"), "user::rw-,user:1000:rwx,group::r--,mask::rwx,other::r--");

  folder_.makeFile("cleared");
  setfacl("cleared", "u:5:rwx,g::r--,m::rwx");
  ASSERT_EQ(permissionsOf(folder_.path("cleared")), 0674U);
  EXPECT_EQ(codeOf(object("cleared")->setAccessControlList(nullptr)), 0);
  EXPECT_EQ(getfacl("cleared"), "user::rw-,group::r--,other::r--");
  EXPECT_EQ(permissionsOf(folder_.path("cleared")), 0644U);
}

TEST_P(AccessControlListContract, SpecialBitsAndModesStayWhateverListComesAndGoes) {
  folder_.makeFile("source");
  setfacl("source", "u:1000:rwx");
  const auto list = listOf("source");
  for (const mode_t mode : {07755, 04711, 02750, 01600, 0, 07000, 0666, 02060}) {
    folder_.makeFile("target");
    ASSERT_EQ(chmod(folder_.path("target").c_str(), mode), 0);
    EXPECT_EQ(codeOf(object("target")->setAccessControlList(list.get())), 0);
    EXPECT_EQ(permissionsOf(folder_.path("target")) & 07707, mode & 07707);
    EXPECT_EQ(ownPermissions("target"), mode);
    EXPECT_EQ(codeOf(object("target")->setAccessControlList(nullptr)), 0);
    EXPECT_EQ(permissionsOf(folder_.path("target")), mode);
    EXPECT_EQ(listOf("target"), nullptr);
    std::filesystem::remove(folder_.path("target"));
  }
}

TEST_P(AccessControlListContract, FoldersKeepTheirDefaultListWholeAndFilesTakeNone) {
  folder_.makeFolder("source");
  folder_.makeFolder("target");
  folder_.makeFile("file");
  setfacl("source", "u:1000:r-x,d:u:1001:rwx,d:g::r-x,d:m::r--,d:o::--x");
  const auto list = listOf("source");
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(list.get())), 0);
  const std::string expected =
      "user::rwx,user:1000:r-x,group::r-x,mask::r-x,other::r-x,"
      "default:user::rwx,default:user:1001:rwx,default:group::r-x,default:mask::r--,default:other::--x";
  EXPECT_EQ(getfacl("source"), expected);
  EXPECT_EQ(getfacl("target"), expected);
  EXPECT_EQ(codeOf(object("file")->setAccessControlList(list.get())), 0);
  EXPECT_EQ(getfacl("file"), "user::rw-,user:1000:r-x,group::r--,mask::r-x,other::r--");
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("target", nullptr)), 0);
  EXPECT_EQ(getfacl("target"), "user::rwx,group::r-x,other::r-x");
  EXPECT_EQ(listOf("target"), nullptr);
}

TEST_P(AccessControlListContract, ADefaultListAloneIsAList) {
  folder_.makeFolder("source");
  folder_.makeFolder("target");
  setfacl("source", "d:u::rwx,d:g::---,d:o::---");
  const auto list = listOf("source");
  ASSERT_NE(list, nullptr);
  EXPECT_FALSE(list->isEmpty());
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("target", list.get())), 0);
  EXPECT_EQ(getfacl("target"), getfacl("source"));
}

TEST_P(AccessControlListContract, WhatIsAlreadySoCostsNoWrite) {
  folder_.makeFolder("folder");
  folder_.makeFile("file");
  folder_.makeFile("plain");
  setfacl("folder", "u:1000:rwx,g:5:r--,m::r-x,d:u:1000:rw-");
  setfacl("file", "u:1000:rwx,g:5:r--,m::r-x");
  const auto list = listOf("folder");
  const auto before = std::vector{changed("folder"), changed("file"), changed("plain")};
  usleep(20'000);  // longer than a tick of the clock that stamps changes
  EXPECT_EQ(codeOf(object("folder")->setAccessControlList(list.get())), 0);
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("folder", list.get())), 0);
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("file", list.get())), 0);
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("plain", nullptr)), 0);
  const auto after = std::vector{changed("folder"), changed("file"), changed("plain")};
  for (std::size_t index = 0; index < before.size(); ++index) {
    EXPECT_EQ(before[index].tv_sec, after[index].tv_sec);
    EXPECT_EQ(before[index].tv_nsec, after[index].tv_nsec) << index;
  }
}

TEST_P(AccessControlListContract, ManyEntriesAreCarriedToo) {
  folder_.makeFile("source");
  folder_.makeFile("target");
  std::string entries;
  for (int index = 0; index < 200; ++index) entries += "u:" + std::to_string(5000 - index) + ":r-x,";
  setfacl("source", entries + "g:1:rwx");
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(listOf("source").get())), 0);
  EXPECT_EQ(getfacl("target"), getfacl("source"));
}

TEST_P(AccessControlListContract, SettingPermissionsKeepsWhatEntriesGrant) {
  folder_.makeFile("file");
  setfacl("file", "u:1000:rwx,g:8:r--,g::r-x,m::r-x");  // u:1000 has r-x in force
  for (const std::uint16_t mode : std::initializer_list<std::uint16_t>{0640, 0600, 0777, 0, 04755, 02770, 0644}) {
    EXPECT_EQ(codeOf(object("file")->setPermissions(mode)), 0);
    EXPECT_EQ(ownPermissions("file"), mode);
    const auto text = getfacl("file");
    EXPECT_NE(text.find("user:1000:r-x,"), std::string::npos) << text;
    EXPECT_NE(text.find("group:8:r--,"), std::string::npos) << text;
    EXPECT_NE(text.find((mode & 020) != 0 ? "mask::rwx" : "mask::r-x"), std::string::npos) << text;
    EXPECT_EQ(permissionsOf(folder_.path("file")) & 07707, mode & 07707);
  }
  EXPECT_EQ(codeOf(open()->setPermissionsOf("file", 0751)), 0);
  EXPECT_EQ(getfacl("file"), "user::rwx,user:1000:r-x,group::r-x,group:8:r--,mask::r-x,other::--x");
}

TEST_P(AccessControlListContract, SettingPermissionsUnderAMaskAloneLeavesAModeAlone) {
  folder_.makeFile("file");
  setfacl("file", "g::r--,m::rwx");
  EXPECT_EQ(codeOf(object("file")->setPermissions(0660)), 0);
  EXPECT_EQ(getfacl("file"), "user::rw-,group::rw-,other::---");
  EXPECT_EQ(permissionsOf(folder_.path("file")), 0660U);
}

TEST_P(AccessControlListContract, SettingPermissionsThatAreSoAlreadyKeepsTheList) {
  folder_.makeFolder("folder");
  setfacl("folder", "u:1000:rwx,d:u:5:r--");
  const auto before = getfacl("folder");
  EXPECT_EQ(codeOf(object("folder")->setPermissions(ownPermissions("folder"))), 0);
  EXPECT_EQ(getfacl("folder"), before);
}

TEST_P(AccessControlListContract, NewObjectsOweTheirFolderWhatItsDefaultListSays) {
  folder_.makeFolder("parent");
  setfacl("parent", "d:u:1000:rwx,d:g:8:-wx,d:g::r--,d:m::rwx,d:o::---");
  const auto parent = open(folder_.path("parent"));
  ASSERT_TRUE(parent->createFile("file", 0600));
  ASSERT_EQ(codeOf(parent->makeDirectory("folder", 0700)), 0);
  ASSERT_EQ(codeOf(parent->makeSymbolicLink("link", "file")), 0);
  ASSERT_EQ(codeOf(parent->makeSpecialFile("pipe", {.type = FileType::Fifo, .permissions = 0600})), 0);
  EXPECT_EQ(permissionsOf(folder_.path("parent/file")), 0600U);
  EXPECT_EQ(permissionsOf(folder_.path("parent/folder")), 0700U);
  EXPECT_EQ(permissionsOf(folder_.path("parent/pipe")), 0600U);

  folder_.makeFile("target");
  folder_.makeFolder("target-folder");
  const auto forFiles = parent->inheritedAccessControlListOf("file").value();
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(forFiles.get())), 0);
  EXPECT_EQ(getfacl("target"), "user::rw-,user:1000:rwx,group::r--,group:8:-wx,mask::rwx,other::r--");
  EXPECT_EQ(parent->inheritedAccessControlListOf("pipe").value()->externalForm(), forFiles->externalForm());
  EXPECT_EQ(parent->inheritedAccessControlListOf("link").value(), nullptr);
  const auto forFolders = parent->inheritedAccessControlListOf("folder").value();
  EXPECT_EQ(codeOf(object("target-folder")->setAccessControlList(forFolders.get())), 0);
  EXPECT_EQ(getfacl("target-folder"),
            "user::rwx,user:1000:rwx,group::r-x,group:8:-wx,mask::rwx,other::r-x,"
            "default:user::rwx,default:user:1000:rwx,default:group::r--,default:group:8:-wx,default:mask::rwx,"
            "default:other::---");
}

TEST_P(AccessControlListContract, TheDefaultListsMaskCountsForWhatIsInherited) {
  folder_.makeFolder("parent");
  setfacl("parent", "d:u:1000:rwx,d:m::r-x");
  const auto parent = open(folder_.path("parent"));
  ASSERT_TRUE(parent->createFile("file", 0700));
  folder_.makeFile("target");
  const auto list = parent->inheritedAccessControlListOf("file").value();
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(list.get())), 0);
  EXPECT_EQ(getfacl("target"), "user::rw-,user:1000:r-x,group::r--,mask::r-x,other::r--");
}

TEST_P(AccessControlListContract, ADefaultListWithoutNamesGivesFilesNoListAndFoldersItself) {
  folder_.makeFolder("parent");
  setfacl("parent", "d:u::rwx,d:g::r-x,d:o::---");
  const auto parent = open(folder_.path("parent"));
  ASSERT_TRUE(parent->createFile("file", 0600));
  ASSERT_EQ(codeOf(parent->makeDirectory("folder", 0700)), 0);
  EXPECT_EQ(parent->inheritedAccessControlListOf("file").value(), nullptr);
  const auto list = parent->inheritedAccessControlListOf("folder").value();
  ASSERT_NE(list, nullptr);
  EXPECT_FALSE(list->isEmpty());
}

TEST_P(AccessControlListContract, AListPassesThroughItsExternalForm) {
  folder_.makeFolder("source");
  folder_.makeFolder("target");
  for (const char* entries :
       {"u:1000:rwx,u:0:---,g:5:r-x", "d:u:1001:rwx,d:m::r--", "u:7:-w-,d:g:8:--x", "d:u::---,d:g::---,d:o::---"}) {
    tests::runTool("setfacl", {"-b", "-k", folder_.path("source")});
    setfacl("source", entries);
    const auto list = listOf("source");
    ASSERT_NE(list, nullptr);
    const auto again = fileSystem_.accessControlListFromExternalForm(list->externalForm());
    ASSERT_TRUE(again) << entries;
    EXPECT_EQ((*again)->externalForm(), list->externalForm());
    EXPECT_FALSE((*again)->isEmpty());
    EXPECT_EQ(codeOf(object("target")->setAccessControlList(again->get())), 0);
    EXPECT_EQ(getfacl("target"), getfacl("source"));
  }
}

class AccessControlListContractAsRoot : public AccessControlListContract {
 protected:
  void SetUp() override {
    needRoot("only root may mount, and act as others");
    if (!IsSkipped()) AccessControlListContract::SetUp();
  }
};
INSTANTIATE_TEST_SUITE_P(All, AccessControlListContractAsRoot, tests::fileSystemImplementations(),
                         tests::implementationName);

TEST_P(AccessControlListContractAsRoot, ListsInMemoryFileSystemsAreTheSame) {
  const tests::MountedFileSystem mounted(folder_.makeFolder("mounted"));
  if (getxattr(folder_.path("mounted").c_str(), "system.posix_acl_access", nullptr, 0) < 0 && errno == EOPNOTSUPP)
    GTEST_SKIP() << "this kernel keeps no lists in memory file systems";
  folder_.makeFolder("mounted/source");
  folder_.makeFolder("mounted/target");
  setfacl("mounted/source", "u:1000:rwx,g:5:r--,d:u:6:rw-");
  ASSERT_EQ(chmod(folder_.path("mounted/target").c_str(), 02750), 0);
  const auto list = listOf("mounted/source");
  EXPECT_EQ(codeOf(object("mounted/target")->setAccessControlList(list.get())), 0);
  EXPECT_EQ(listOf("mounted/target")->externalForm(), list->externalForm());
  EXPECT_EQ(codeOf(object("mounted/target")->setAccessControlList(nullptr)), 0);
  EXPECT_EQ(getfacl("mounted/target"), "user::rwx,group::r-x,other::---");
  EXPECT_EQ(permissionsOf(folder_.path("mounted/target")), 02750U);
}

TEST_P(AccessControlListContractAsRoot, WhatIsLockedKeepsItsList) {
  folder_.makeFile("file");
  setfacl("file", "u:1000:rwx");
  const auto handle = object("file");
  ASSERT_EQ(codeOf(handle->setFlags(host::file_flags::kUserImmutable)), 0);
  EXPECT_EQ(codeOf(handle->setAccessControlList(nullptr)), posix::kNotPermitted);
  EXPECT_EQ(codeOf(open()->setAccessControlListOf("file", nullptr)), posix::kNotPermitted);
  EXPECT_EQ(codeOf(handle->setFlags(0)), 0);
  EXPECT_EQ(getfacl("file"), "user::rw-,user:1000:rwx,group::r--,mask::rwx,other::r--");
}

// The kernel's own judgement, not the lists' wording.
TEST_P(AccessControlListContractAsRoot, AnEntryIsInForceForItsUser) {
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  folder_.makeFile("source");
  setfacl("source", "u:1000:r--");
  const auto path = folder_.makeFile("target");
  const auto isReadableFor = [&](uid_t user) {
    if (seteuid(user) != 0) return false;
    const host::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return seteuid(0) == 0 && file;
  };
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(listOf("source").get())), 0);
  EXPECT_TRUE(isReadableFor(1000));
  EXPECT_FALSE(isReadableFor(1001));
  EXPECT_EQ(codeOf(object("target")->setPermissions(0)), 0);
  EXPECT_TRUE(isReadableFor(1000));
  EXPECT_EQ(codeOf(object("target")->setAccessControlList(nullptr)), 0);
  EXPECT_FALSE(isReadableFor(1000));
}

}  // namespace
}  // namespace vantrell
