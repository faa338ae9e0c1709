// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "tests/host/FileSystemContract.h"

namespace vantrell {
namespace {

using host::FileType;
using host::FollowLinks;
using host::FSCompression;
using testing::ElementsAre;
using testing::UnorderedElementsAre;
using tests::codeOf;
using tests::statusOfObject;

class ObjectHandleContract : public tests::FileSystemContractBase {
 protected:
  static std::vector<std::string> namesOf(const host::ObjectHandle& object) {
    auto names = object.extendedAttributeNames(FSCompression::Hide).value();
    std::erase_if(names, tests::isSystemsOwnAttribute);
    return names;
  }
};
INSTANTIATE_TEST_SUITE_P(All, ObjectHandleContract, tests::fileSystemImplementations(), tests::implementationName);

class ObjectHandleContractAsRoot : public ObjectHandleContract {
 protected:
  void SetUp() override { needRoot("only root may make devices and use trusted attributes"); }
};
INSTANTIATE_TEST_SUITE_P(All, ObjectHandleContractAsRoot, tests::fileSystemImplementations(),
                         tests::implementationName);

Date toDate(const timespec& time) {
  return {time.tv_sec, static_cast<std::uint32_t>(time.tv_nsec)};
}

TEST_P(ObjectHandleContract, HoldsTheObjectWhereverItsNameLeads) {
  folder_.makeFile("file", "12345");
  const auto handle = object("file");
  std::filesystem::rename(folder_.path("file"), folder_.path("elsewhere"));
  folder_.makeFile("file", "other");
  EXPECT_EQ(handle->status()->inode, statusOfObject(folder_.path("elsewhere")).st_ino);
  EXPECT_EQ(codeOf(handle->setPermissions(0600)), 0);
  EXPECT_EQ(codeOf(handle->setExtendedAttribute("user.a", bytesOf("1"))), 0);
  EXPECT_EQ(tests::permissionsOf(folder_.path("elsewhere")), 0600U);
  EXPECT_EQ(tests::permissionsOf(folder_.path("file")), 0644U);
  EXPECT_TRUE(namesOf(*object("file")).empty());
  std::filesystem::remove(folder_.path("elsewhere"));
  EXPECT_EQ(handle->status()->links, 0U);
  EXPECT_EQ(textOf(handle->extendedAttribute("user.a").value()), "1");
}

TEST_P(ObjectHandleContract, FollowsALinkOnlyWhenAsked) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  folder_.makeLink("dangling", "nowhere");
  const auto handle = open();
  EXPECT_TRUE((*handle->openObject("link", FollowLinks::No))->status()->isSymbolicLink());
  EXPECT_EQ((*handle->openObject("link", FollowLinks::Yes))->status()->type, FileType::Regular);
  EXPECT_EQ((*fileSystem_.openObject(folder_.path("link"), FollowLinks::Yes))->status()->type, FileType::Regular);
  EXPECT_EQ(codeOf(handle->openObject("dangling", FollowLinks::Yes)), posix::kNoEntry);
  EXPECT_EQ(codeOf(fileSystem_.openObject(folder_.path("missing"), FollowLinks::No)), posix::kNoEntry);
  EXPECT_EQ(codeOf(fileSystem_.openObject(std::string("/tmp\0x", 6), FollowLinks::No)), posix::kInvalidArgument);
}

TEST_P(ObjectHandleContract, EnumeratesTheFolderThatItIs) {
  folder_.makeFolder("folder");
  folder_.makeFile("folder/inner");
  folder_.makeFile("file");
  folder_.makeLink("link", "folder");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const auto folder = object("folder")->openDirectory();
  ASSERT_TRUE(folder);
  const auto entry = (*folder)->next();
  ASSERT_TRUE(entry && *entry);
  EXPECT_EQ((*entry)->name, "inner");
  for (const char* name : {"file", "link", "pipe"})
    EXPECT_EQ(codeOf(object(name)->openDirectory()), posix::kNotDirectory) << name;
}

TEST_P(ObjectHandleContract, SetsTimesOfAnyObjectAndLeavesOutTheOther) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "file");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const Date early{-86'400, 500'000'000};
  const Date late{4'000'000'000, 123'456'789};
  for (const char* name : {"file", "folder", "link", "pipe"}) {
    const auto handle = object(name);
    EXPECT_EQ(codeOf(handle->setTimes(early, late)), 0);
    EXPECT_EQ(toDate(tests::accessTimeOf(statusOfObject(folder_.path(name)))), early) << name;
    EXPECT_EQ(toDate(tests::modificationTimeOf(statusOfObject(folder_.path(name)))), late) << name;
    EXPECT_EQ(codeOf(handle->setTimes(std::nullopt, early)), 0);
    EXPECT_EQ(codeOf(handle->setTimes(late, std::nullopt)), 0);
    EXPECT_EQ(codeOf(handle->setTimes(std::nullopt, std::nullopt)), 0);
    EXPECT_EQ(toDate(tests::accessTimeOf(statusOfObject(folder_.path(name)))), late) << name;
    EXPECT_EQ(toDate(tests::modificationTimeOf(statusOfObject(folder_.path(name)))), early) << name;
    EXPECT_EQ(codeOf(handle->setTimes(Date{0, 1'073'741'823}, std::nullopt)), posix::kInvalidArgument);
    EXPECT_EQ(codeOf(handle->touch()), 0);
    EXPECT_LT(Date::now().secondsSince(handle->status()->modified), 10) << name;
    EXPECT_LT(Date::now().secondsSince(handle->status()->accessed), 10) << name;
  }
  EXPECT_GT(tests::modificationTimeOf(statusOfObject(folder_.path("file"))).tv_sec, 1'000'000'000);
}

TEST_P(ObjectHandleContract, KeepsAttributesOfAnySize) {
  folder_.makeFile("file");
  const auto handle = object("file");
  for (const std::size_t size : {0, 1, 1023, 1024, 1025, 3000}) {
    const std::string value(size, 'v');
    EXPECT_EQ(codeOf(handle->setExtendedAttribute("user.value", bytesOf(value))), 0) << size;
    EXPECT_EQ(textOf(handle->extendedAttribute("user.value").value()), value);
  }
  EXPECT_EQ(codeOf(handle->extendedAttribute("user.missing")), posix::kNoAttribute);
  EXPECT_EQ(codeOf(handle->removeExtendedAttribute("user.missing", FSCompression::Hide)), posix::kNoAttribute);
  EXPECT_EQ(codeOf(handle->removeExtendedAttribute("user.value", FSCompression::Expose)), 0);
  EXPECT_TRUE(namesOf(*handle).empty());
}

TEST_P(ObjectHandleContract, ListsAttributeNamesAsBytes) {
  folder_.makeFile("file");
  const auto handle = object("file");
  std::vector<std::string> names;
  for (int index = 0; index < 40; ++index) {
    names.push_back("user." + std::string(30, 'n') + (tests::kNamesAreAnyBytes ? "\xFF\x01" : "\xC3\xA4\x01") +
                    std::to_string(index));
    ASSERT_EQ(codeOf(handle->setExtendedAttribute(names.back(), {})), 0);
  }
  EXPECT_THAT(namesOf(*handle), testing::UnorderedElementsAreArray(names));
}

TEST_P(ObjectHandleContract, RefusesAttributeNamesThatAreNotOneOrHoldLists) {
  folder_.makeFile("file");
  const auto handle = object("file");
  std::vector<std::string> refused(std::begin(tests::kAttributesThatHoldLists),
                                   std::end(tests::kAttributesThatHoldLists));
  refused.emplace_back("user.a\0b", 8);
  for (const auto& name : refused) {
    EXPECT_EQ(codeOf(handle->extendedAttribute(name)), posix::kInvalidArgument);
    EXPECT_EQ(codeOf(handle->setExtendedAttribute(name, bytesOf("v"))), posix::kInvalidArgument);
    EXPECT_EQ(codeOf(handle->removeExtendedAttribute(name, FSCompression::Hide)), posix::kInvalidArgument);
  }
  EXPECT_NE(codeOf(handle->setExtendedAttribute("", bytesOf("v"))), 0);
  EXPECT_NE(codeOf(handle->setExtendedAttribute("user." + std::string(300, 'x'), bytesOf("v"))), 0);
  EXPECT_TRUE(namesOf(*handle).empty());
}

TEST_P(ObjectHandleContract, WhereThereAreNoAttributesThereIsNoNameOfOne) {
  if (!tests::kHasPseudoFiles) GTEST_SKIP() << "no file system without attributes is certain to be here";
  const auto folder = fileSystem_.openDirectory(tests::kPseudoFolder, FollowLinks::Yes);
  const auto handle = (*folder)->openObject(tests::kPseudoFile, FollowLinks::No);
  ASSERT_TRUE(handle);
  EXPECT_TRUE((*handle)->extendedAttributeNames(FSCompression::Expose).value().empty());
  EXPECT_EQ(codeOf((*handle)->extendedAttribute("user.a")), posix::kNotSupported);
}

// The path of a held link must lead to the link, not to what that links to.
TEST_P(ObjectHandleContractAsRoot, AHeldLinkHasItsOwnAttributesAndOwner) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  const auto link = object("link");
  EXPECT_EQ(codeOf(link->setExtendedAttribute("trusted.mark", bytesOf("link"))), 0);
  ASSERT_EQ(tests::sizeOfAttribute(folder_.path("link"), "trusted.mark"), 4);
  EXPECT_EQ(tests::sizeOfAttribute(folder_.path("file"), "trusted.mark"), -1);
  EXPECT_THAT(namesOf(*link), ElementsAre("trusted.mark"));
  EXPECT_EQ(textOf(link->extendedAttribute("trusted.mark").value()), "link");
  EXPECT_TRUE(namesOf(*object("file")).empty());
  EXPECT_EQ(codeOf(link->setOwner(1234, std::nullopt)), 0);
  EXPECT_EQ(statusOfObject(folder_.path("link")).st_uid, 1234U);
  EXPECT_EQ(statusOfObject(folder_.path("file")).st_uid, 0U);
  EXPECT_EQ(codeOf(link->removeExtendedAttribute("trusted.mark", FSCompression::Hide)), 0);
  EXPECT_TRUE(namesOf(*link).empty());
}

TEST_P(ObjectHandleContractAsRoot, ActsOnPipesDevicesAndSocketsWithoutOpeningThem) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  ASSERT_EQ(mknod(folder_.path("device").c_str(), S_IFCHR | 0600, makedev(250, 250)), 0);  // no driver: can't be opened
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  folder_.path("socket").copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  for (const char* name : {"pipe", "device", "socket"}) {
    const auto handle = object(name);
    EXPECT_EQ(codeOf(handle->setPermissions(04640)), 0) << name;
    EXPECT_EQ(codeOf(handle->setOwner(12, 34)), 0) << name;
    EXPECT_EQ(codeOf(handle->setExtendedAttribute("trusted.a", bytesOf("1"))),
              tests::kSpecialFilesHaveAttributes ? 0 : posix::kNotSupported)
        << name;
    EXPECT_EQ(codeOf(handle->setTimes(Date{5, 0}, Date{6, 0})), 0) << name;
    EXPECT_EQ(codeOf(handle->accessControlList()), 0) << name;
    EXPECT_EQ(codeOf(handle->setFlags(0)), 0) << name;
    EXPECT_EQ(codeOf(handle->setFlags(host::file_flags::kUserNoDump)),
              tests::kEveryTypeHasFlags ? 0 : posix::kNotSupported)
        << name;
    const auto status = statusOfObject(folder_.path(name));
    EXPECT_EQ(status.st_uid, 12U);
    EXPECT_EQ(status.st_gid, 34U);
    EXPECT_EQ(tests::modificationTimeOf(status).tv_sec, 6);
  }
  close(listener);
  EXPECT_EQ(::open(folder_.path("pipe").c_str(), O_WRONLY | O_NONBLOCK), -1);
  EXPECT_EQ(errno, ENXIO);
}

TEST_P(ObjectHandleContractAsRoot, SetsTheFlagsOfWhatItHolds) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  for (const char* name : {"file", "folder"}) {
    const auto handle = object(name);
    EXPECT_EQ(codeOf(handle->setFlags(host::file_flags::kUserImmutable | host::file_flags::kUserNoDump)), 0);
    EXPECT_EQ(handle->status()->flags, host::file_flags::kUserImmutable | host::file_flags::kUserNoDump);
    EXPECT_EQ(codeOf(handle->setFlags(0)), 0);
    EXPECT_EQ(handle->status()->flags, 0U);
  }
}

TEST_P(ObjectHandleContractAsRoot, WhatIsLockedIsNotChanged) {
  folder_.makeFile("file");
  const auto handle = object("file");
  ASSERT_EQ(codeOf(handle->setFlags(host::file_flags::kUserImmutable)), 0);
  EXPECT_EQ(codeOf(handle->setOwner(1, 1)), posix::kNotPermitted);
  EXPECT_EQ(codeOf(handle->setPermissions(0600)), posix::kNotPermitted);
  EXPECT_EQ(codeOf(handle->setTimes(Date{1, 0}, Date{1, 0})), posix::kNotPermitted);
  EXPECT_EQ(codeOf(handle->touch()), posix::kNotPermitted);
  EXPECT_EQ(codeOf(handle->setExtendedAttribute("user.a", bytesOf("1"))), posix::kNotPermitted);
  EXPECT_EQ(codeOf(open()->setOwnerOf("file", 1, 1)), posix::kNotPermitted);
  EXPECT_EQ(codeOf(open()->setPermissionsOf("file", 0600)), posix::kNotPermitted);
  EXPECT_EQ(codeOf(handle->setFlags(0)), 0);
  EXPECT_EQ(codeOf(handle->setPermissions(0600)), 0);
}

TEST_P(ObjectHandleContractAsRoot, WhatIsLockedIsNotMovedOrLinkedAndNothingComesIntoALockedFolder) {
  constexpr auto kImmutable = host::file_flags::kUserImmutable;
  constexpr auto kAppend = host::file_flags::kUserAppend;
  folder_.makeFile("file");
  folder_.makeFile("free");
  folder_.makeFolder("locked");
  folder_.makeFile("locked/inner");
  folder_.makeFolder("growing");
  folder_.makeFile("growing/inner");
  const auto handle = open();
  const auto locked = open(folder_.path("locked"));
  const auto growing = open(folder_.path("growing"));
  ASSERT_EQ(codeOf(locked->setFlags(kImmutable)), 0);
  ASSERT_EQ(codeOf(growing->setFlags(kAppend)), 0);

  for (const auto flag : {kImmutable, kAppend}) {
    ASSERT_EQ(codeOf(handle->setFlagsOf("file", flag, FollowLinks::No)), 0);
    EXPECT_EQ(codeOf(handle->rename("file", *handle, "new")), posix::kNotPermitted);
    EXPECT_EQ(codeOf(handle->makeLink("new", *handle, "file")), posix::kNotPermitted);
    ASSERT_EQ(codeOf(handle->setFlagsOf("file", 0, FollowLinks::No)), 0);
  }
  EXPECT_EQ(codeOf(handle->rename("locked", *handle, "new")), posix::kNotPermitted);
  EXPECT_EQ(codeOf(locked->rename("inner", *handle, "new")), posix::kNotPermitted);
  EXPECT_EQ(codeOf(growing->rename("inner", *handle, "new")), posix::kNotPermitted);
  EXPECT_EQ(codeOf(handle->rename("free", *locked, "free")), posix::kNotPermitted);

  EXPECT_EQ(codeOf(locked->createFile("new", 0600)), posix::kNotPermitted);
  EXPECT_EQ(codeOf(locked->makeDirectory("new", 0700)), posix::kNotPermitted);
  EXPECT_EQ(codeOf(locked->makeSymbolicLink("new", "x")), posix::kNotPermitted);
  EXPECT_EQ(codeOf(locked->makeSpecialFile("new", {.type = FileType::Fifo})), posix::kNotPermitted);
  EXPECT_EQ(codeOf(locked->makeLink("new", *handle, "free")), posix::kNotPermitted);
  EXPECT_EQ(codeOf(locked->createFile("inner", 0600)), posix::kExists);

  EXPECT_EQ(codeOf(growing->createFile("new", 0600)), 0);
  EXPECT_EQ(codeOf(handle->rename("free", *growing, "free")), 0);
  EXPECT_EQ(codeOf(locked->setFlags(0)), 0);
  EXPECT_EQ(codeOf(growing->setFlags(0)), 0);
  EXPECT_EQ(codeOf(locked->rename("inner", *handle, "new")), 0);
}

}  // namespace
}  // namespace vantrell
