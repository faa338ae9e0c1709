// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <climits>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/host/FileSystemContract.h"

namespace vantrell {
namespace {

using host::FileStatus;
using host::FileType;
using host::FollowLinks;
using tests::codeOf;
using tests::permissionsOf;
using tests::ScopedFileCreationMask;
using tests::statusOfObject;

class FileCreationContract : public tests::FileSystemContractBase {};
INSTANTIATE_TEST_SUITE_P(All, FileCreationContract, tests::fileSystemImplementations(), tests::implementationName);

class FileCreationContractAsRoot : public tests::FileSystemContractBase {
 protected:
  void SetUp() override { needRoot("only root may make devices, mount and give objects away"); }
};
INSTANTIATE_TEST_SUITE_P(All, FileCreationContractAsRoot, tests::fileSystemImplementations(),
                         tests::implementationName);

TEST_P(FileCreationContract, WhatIsMadeHasThePermissionsGivenWhateverTheMask) {
  const auto handle = open();
  const FileStatus pipe{.type = FileType::Fifo, .permissions = 0642};
  for (const int mask : {0, 022, 077, 0777}) {
    const ScopedFileCreationMask scoped(static_cast<mode_t>(mask));
    const auto name = std::to_string(mask);
    EXPECT_TRUE(handle->createFile(("file" + name).c_str(), 0664));
    EXPECT_EQ(codeOf(handle->makeDirectory(("folder" + name).c_str(), 0775)), 0);
    EXPECT_EQ(codeOf(handle->makeDirectory(("sticky" + name).c_str(), 01777)), 0);
    EXPECT_EQ(codeOf(handle->makeSpecialFile(("pipe" + name).c_str(), pipe)), 0);
    EXPECT_EQ(permissionsOf(folder_.path("file" + name)), 0664U);
    EXPECT_EQ(permissionsOf(folder_.path("folder" + name)), 0775U);
    EXPECT_EQ(permissionsOf(folder_.path("sticky" + name)), 01777U);
    EXPECT_EQ(permissionsOf(folder_.path("pipe" + name)), 0642U);
  }
  EXPECT_TRUE(handle->createFile("none", 0));
  EXPECT_EQ(permissionsOf(folder_.path("none")), 0U);
  EXPECT_EQ(codeOf(handle->makeDirectory("group", 02750)), 0);
  EXPECT_EQ(permissionsOf(folder_.path("group")), 02750U);
}

TEST_P(FileCreationContract, AFolderHasItsOwnPermissionsNotItsParents) {
  ASSERT_EQ(chmod(folder_.makeFolder("parent").c_str(), 02755), 0);
  EXPECT_EQ(codeOf(open(folder_.path("parent"))->makeDirectory("child", 0755)), 0);
  EXPECT_EQ(permissionsOf(folder_.path("parent/child")), 0755U);
}

TEST_P(FileCreationContract, NothingTakesANameThatIsTaken) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("dangling", "nowhere");
  const auto handle = open();
  for (const char* name : {"file", "folder", "dangling"}) {
    EXPECT_EQ(codeOf(handle->createFile(name, 0600)), posix::kExists) << name;
    EXPECT_EQ(codeOf(handle->makeDirectory(name, 0700)), posix::kExists) << name;
    EXPECT_EQ(codeOf(handle->makeSymbolicLink(name, "x")), posix::kExists) << name;
    EXPECT_EQ(codeOf(handle->makeSpecialFile(name, {.type = FileType::Fifo})), posix::kExists) << name;
    EXPECT_EQ(codeOf(handle->makeLink(name, *handle, "file")), posix::kExists) << name;
  }
  EXPECT_FALSE(std::filesystem::exists(folder_.path("nowhere")));
}

TEST_P(FileCreationContract, TakesOneNameAndNothingElse) {
  folder_.makeFile("file");
  const auto handle = open();
  for (const char* name : {"", ".", "..", "a/b", "/a", "a/"}) {
    EXPECT_EQ(codeOf(handle->createFile(name, 0600)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->makeDirectory(name, 0700)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->makeSymbolicLink(name, "x")), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->makeSpecialFile(name, {.type = FileType::Fifo})), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->makeLink(name, *handle, "file")), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->makeLink("new", *handle, name)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->rename(name, *handle, "new")), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->rename("file", *handle, name)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->setPermissionsOf(name, 0700)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->setOwnerOf(name, 0, 0)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->openObject(name, FollowLinks::No)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->openFile(name)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->readLinkOf(name)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->accessControlListOf(name)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->setAccessControlListOf(name, nullptr)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->inheritedAccessControlListOf(name)), posix::kInvalidArgument) << name;
  }
  EXPECT_EQ(codeOf(handle->createFile(std::string(256, 'x').c_str(), 0600)), posix::kNameTooLong);
  EXPECT_EQ(codeOf(handle->accessControlListOf(std::string(5000, 'x').c_str())), posix::kNameTooLong);
}

TEST_P(FileCreationContract, MakesLinksWithAnyTarget) {
  const auto handle = open();
  const std::string longTarget(PATH_MAX - 96, 't');
  EXPECT_EQ(codeOf(handle->makeSymbolicLink("link", "../some//where/")), 0);
  EXPECT_EQ(codeOf(handle->makeSymbolicLink("long", longTarget)), 0);
  EXPECT_EQ(handle->readLinkOf("link").value(), "../some//where/");
  EXPECT_EQ(handle->readLinkOf("long").value(), longTarget);
  EXPECT_EQ(codeOf(handle->makeSymbolicLink("zero", std::string("a\0b", 3))), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(handle->makeSymbolicLink("longer", std::string(5000, 't'))), posix::kNameTooLong);
}

TEST_P(FileCreationContract, AFurtherNameIsForTheObjectItself) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  const auto handle = open();
  const auto other = open(folder_.makeFolder("other"));
  EXPECT_EQ(codeOf(other->makeLink("second", *handle, "file")), 0);
  EXPECT_EQ(codeOf(other->makeLink("second-link", *handle, "link")), 0);
  EXPECT_EQ(statusOfObject(folder_.path("other/second")).st_ino, statusOfObject(folder_.path("file")).st_ino);
  EXPECT_EQ(statusOfObject(folder_.path("other/second-link")).st_ino, statusOfObject(folder_.path("link")).st_ino);
  EXPECT_EQ(codeOf(handle->makeLink("third", *handle, "missing")), posix::kNoEntry);
  EXPECT_EQ(codeOf(handle->makeLink("third", *handle, "other")), posix::kNotPermitted);
}

TEST_P(FileCreationContract, SpecialFilesOfOtherTypesAreNotSupported) {
  const auto handle = open();
  for (const auto type :
       {FileType::Regular, FileType::Directory, FileType::SymbolicLink, FileType::Socket, FileType::Unknown})
    EXPECT_EQ(codeOf(handle->makeSpecialFile("name", {.type = type})), posix::kNotSupported);
  EXPECT_FALSE(std::filesystem::exists(folder_.path("name")));
}

TEST_P(FileCreationContractAsRoot, MakesDevices) {
  const ScopedFileCreationMask mask(077);
  ASSERT_EQ(mknod(folder_.path("model").c_str(), S_IFCHR, makedev(1, 3)), 0);
  const auto handle = open();
  auto model = *handle->statusOf("model", FollowLinks::No);
  EXPECT_EQ(model.specialDevice, makedev(1, 3));
  model.permissions = 0666;
  EXPECT_EQ(codeOf(handle->makeSpecialFile("character", model)), 0);
  EXPECT_EQ(statusOfObject(folder_.path("character")).st_rdev, makedev(1, 3));
  EXPECT_EQ(permissionsOf(folder_.path("character")), 0666U);
  const FileStatus block{
      .type = FileType::BlockDevice, .permissions = 0640, .specialDevice = static_cast<std::uint64_t>(makedev(7, 130))};
  EXPECT_EQ(codeOf(handle->makeSpecialFile("block", block)), 0);
  EXPECT_TRUE(S_ISBLK(statusOfObject(folder_.path("block")).st_mode));
  EXPECT_EQ(statusOfObject(folder_.path("block")).st_rdev, makedev(7, 130));
}

TEST_P(FileCreationContractAsRoot, MakesWhiteoutsWhereThereAreAny) {
  const auto handle = open();
  const auto code = codeOf(handle->makeSpecialFile("whiteout", {.type = FileType::Whiteout, .permissions = 0}));
  EXPECT_EQ(code, tests::kWhiteoutsCanBeMade ? 0 : posix::kNotSupported);
  if (!tests::kWhiteoutsCanBeMade) return;
  EXPECT_EQ(handle->statusOf("whiteout", FollowLinks::No)->type, FileType::Whiteout);
  EXPECT_EQ(statusOfObject(folder_.path("whiteout")).st_rdev, makedev(0, 0));
}

TEST_P(FileCreationContract, MovesWithoutReplacing) {
  folder_.makeFile("file", "one");
  folder_.makeFile("taken", "two");
  folder_.makeLink("link", "nowhere");
  folder_.makeLink("dangling", "nowhere");
  folder_.makeFolder("folder/inner");
  folder_.makeFolder("empty");
  const auto handle = open();
  const auto folder = open(folder_.path("folder"));
  for (const char* name : {"taken", "dangling", "empty"})
    EXPECT_EQ(codeOf(handle->rename("file", *handle, name)), posix::kExists) << name;
  EXPECT_EQ(codeOf(handle->rename("folder", *handle, "empty")), posix::kExists);
  EXPECT_EQ(codeOf(handle->rename("missing", *handle, "new")), posix::kNoEntry);
  EXPECT_EQ(codeOf(handle->rename("folder", *folder, "itself")), posix::kInvalidArgument);

  EXPECT_EQ(codeOf(handle->rename("file", *folder, "file")), 0);
  EXPECT_EQ(codeOf(handle->rename("link", *folder, "moved")), 0);
  EXPECT_EQ(codeOf(folder->rename("inner", *handle, "outer")), 0);
  EXPECT_TRUE(std::filesystem::exists(folder_.path("folder/file")));
  EXPECT_EQ(folder->readLinkOf("moved").value(), "nowhere");
  EXPECT_TRUE(std::filesystem::is_directory(folder_.path("outer")));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("file")));
}

TEST_P(FileCreationContractAsRoot, NothingIsMovedOrLinkedAcrossFileSystems) {
  const tests::MountedFileSystem mounted(folder_.makeFolder("mounted"));
  folder_.makeFile("file");
  const auto handle = open();
  const auto other = open(folder_.path("mounted"));
  EXPECT_EQ(codeOf(handle->rename("file", *other, "file")), posix::kCrossDevice);
  EXPECT_EQ(codeOf(other->makeLink("file", *handle, "file")), posix::kCrossDevice);
  EXPECT_TRUE(std::filesystem::exists(folder_.path("file")));
}

TEST_P(FileCreationContractAsRoot, ChangesOwnersOfTheEntryItself) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  const auto handle = open();
  EXPECT_EQ(codeOf(handle->setOwnerOf("link", 1234, 2345)), 0);
  EXPECT_EQ(statusOfObject(folder_.path("link")).st_uid, 1234U);
  EXPECT_EQ(statusOfObject(folder_.path("link")).st_gid, 2345U);
  EXPECT_EQ(statusOfObject(folder_.path("file")).st_uid, 0U);
  EXPECT_EQ(codeOf(handle->setOwnerOf("file", std::nullopt, 77)), 0);
  EXPECT_EQ(codeOf(handle->setOwnerOf("file", 66, std::nullopt)), 0);
  EXPECT_EQ(statusOfObject(folder_.path("file")).st_uid, 66U);
  EXPECT_EQ(statusOfObject(folder_.path("file")).st_gid, 77U);
  EXPECT_EQ(codeOf(handle->setOwnerOf("file", 0xFFFFFFFF, 1)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(handle->setOwnerOf("missing", 1, 1)), posix::kNoEntry);
}

TEST_P(FileCreationContractAsRoot, LeavingOutBothOwnersChangesNothing) {
  const auto path = folder_.makeFile("file");
  ASSERT_EQ(chown(path.c_str(), 5, 5), 0);
  ASSERT_EQ(chmod(path.c_str(), 06755), 0);
  EXPECT_EQ(codeOf(open()->setOwnerOf("file", std::nullopt, std::nullopt)), 0);
  EXPECT_EQ(permissionsOf(path), 06755U);
}

TEST_P(FileCreationContract, SetsAllTwelvePermissionBits) {
  const auto path = folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "file");
  const auto handle = open();
  for (const std::uint16_t permissions : std::initializer_list<std::uint16_t>{07777, 04711, 0, 01600, 02070, 0644}) {
    EXPECT_EQ(codeOf(handle->setPermissionsOf("file", permissions)), 0);
    EXPECT_EQ(permissionsOf(path), permissions);
    EXPECT_EQ(handle->ownPermissionsOf("file", *handle->statusOf("file", FollowLinks::No)).value(), permissions);
    EXPECT_EQ(codeOf(object("folder")->setPermissions(static_cast<std::uint16_t>(permissions | 0700))), 0);
    EXPECT_EQ(permissionsOf(folder_.path("folder")), permissions | 0700U);
  }
  EXPECT_EQ(codeOf(handle->setPermissionsOf("link", 0)), 0);
  EXPECT_EQ(codeOf(object("link")->setPermissions(0)), 0);
  EXPECT_EQ(permissionsOf(path), 0644U);
  EXPECT_EQ(handle->ownPermissionsOf("link", *handle->statusOf("link", FollowLinks::No)).value(),
            tests::kLinksHaveModes ? 0 : 0777);
  EXPECT_EQ(codeOf(handle->setPermissionsOf("missing", 0)), posix::kNoEntry);
}

TEST_P(FileCreationContract, ReportsWhenAnObjectWasCreated) {
  const auto before = Date::now();
  folder_.makeFile("file");
  const auto status = open()->statusOf("file", FollowLinks::No);
  ASSERT_TRUE(status->created);
  EXPECT_LT(before.secondsSince(*status->created), 1);
  EXPECT_LT(status->created->secondsSince(Date::now()), 1);
  if (!tests::kHasPseudoFiles) return;
  const auto folder = fileSystem_.openDirectory(tests::kPseudoFolder, FollowLinks::Yes);
  EXPECT_FALSE((*folder)->statusOf(tests::kPseudoFile, FollowLinks::No)->created);
}

}  // namespace
}  // namespace vantrell
