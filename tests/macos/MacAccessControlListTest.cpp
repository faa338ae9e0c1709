// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/acl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/MacAccessControlList.h"
#include "host/macos/MacFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using host::AccessControlList;
using host::FollowLinks;
using host::MacAccessControlList;
using host::MacFileSystem;

using List = std::unique_ptr<AccessControlList>;

class MacAccessControlListTest : public testing::Test {
 protected:
  std::unique_ptr<host::DirectoryHandle> open(const std::string& path) {
    return std::move(fileSystem_.openDirectory(path, FollowLinks::No).value());
  }
  std::unique_ptr<host::DirectoryHandle> open() { return open(folder_.path()); }
  std::unique_ptr<host::ObjectHandle> object(const std::string& name) {
    return std::move(fileSystem_.openObject(folder_.path(name), FollowLinks::No).value());
  }
  List listOf(const std::string& name) { return std::move(object(name)->accessControlList().value()); }

  /// Adds an entry in chmod's own words, past the code under test.
  void add(const std::string& name, const std::string& entry) const {
    const auto line = "/bin/chmod +a '" + entry + "' '" + folder_.path(name) + "'";
    ASSERT_EQ(std::system(line.c_str()), 0) << line;
  }
  /// The library's own text, past the code under test; empty where there is no list.
  std::string textOf(const std::string& name) const {
    const auto list = acl_get_file(folder_.path(name).c_str(), ACL_TYPE_EXTENDED);
    if (!list) return "";
    char* const words = acl_to_text(list, nullptr);
    std::string text = words ? words : "?";
    if (words) acl_free(words);
    acl_free(list);
    return text;
  }
  Data libraryFormOf(const std::string& name) const {
    const auto list = acl_get_file(folder_.path(name).c_str(), ACL_TYPE_EXTENDED);
    EXPECT_NE(list, nullptr);
    Data form(static_cast<std::size_t>(acl_size(list)));
    EXPECT_GT(acl_copy_ext(form.data(), list, static_cast<ssize_t>(form.size())), 0);
    acl_free(list);
    return form;
  }
  timespec changed(const std::string& name) const {
    struct stat status {};
    EXPECT_EQ(lstat(folder_.path(name).c_str(), &status), 0);
    return status.st_ctimespec;
  }

  MacFileSystem fileSystem_;
  tests::TemporaryFolder folder_;
};

TEST_F(MacAccessControlListTest, ThereIsNoneWhereThereIsOnlyAMode) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "file");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  for (const char* name : {"file", "folder", "link", "pipe"}) {
    EXPECT_EQ(listOf(name), nullptr) << name;
    EXPECT_EQ(open()->accessControlListOf(name).value(), nullptr) << name;
    EXPECT_EQ(open()->inheritedAccessControlListOf(name).value(), nullptr) << name;
    EXPECT_FALSE(object(name)->setAccessControlList(nullptr)) << name;
  }
  EXPECT_EQ(open()->accessControlListOf("missing").error(), Error::posix(posix::kNoEntry));
  EXPECT_EQ(open()->setAccessControlListOf("missing", nullptr), Error::posix(posix::kNoEntry));
}

TEST_F(MacAccessControlListTest, CarriesAListFromOneObjectToAnother) {
  folder_.makeFile("source");
  folder_.makeFile("target");
  folder_.makeFile("by-name");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  add("source", "everyone allow read,execute");
  add("source", "group:wheel deny write,append");
  const auto list = listOf("source");
  ASSERT_NE(list, nullptr);
  EXPECT_FALSE(list->isEmpty());
  EXPECT_FALSE(object("target")->setAccessControlList(list.get()));
  EXPECT_FALSE(open()->setAccessControlListOf("by-name", list.get()));
  EXPECT_FALSE(object("pipe")->setAccessControlList(list.get()));
  for (const char* name : {"target", "by-name", "pipe"}) EXPECT_EQ(textOf(name), textOf("source")) << name;
  EXPECT_EQ(open()->accessControlListOf("by-name").value()->externalForm(), list->externalForm());

  EXPECT_FALSE(object("target")->setAccessControlList(nullptr));
  EXPECT_FALSE(open()->setAccessControlListOf("by-name", nullptr));
  EXPECT_EQ(textOf("target"), "");
  EXPECT_EQ(textOf("by-name"), "");
  EXPECT_EQ(listOf("target"), nullptr);
}

TEST_F(MacAccessControlListTest, ModesStayWhateverListComesAndGoes) {
  folder_.makeFile("source");
  add("source", "everyone allow read");
  const auto list = listOf("source");
  const auto path = folder_.makeFile("target");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  EXPECT_FALSE(object("target")->setAccessControlList(list.get()));
  const auto status = fileSystem_.status(path, FollowLinks::No).value();
  EXPECT_EQ(status.permissions, 0640);
  EXPECT_EQ(open()->ownPermissionsOf("target", status).value(), 0640);
  EXPECT_FALSE(object("target")->setPermissions(0600));
  EXPECT_EQ(textOf("target"), textOf("source"));
}

TEST_F(MacAccessControlListTest, ALinkHasNoneAndGetsNone) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  add("file", "everyone allow read");
  const auto list = listOf("file");
  EXPECT_EQ(listOf("link"), nullptr);
  EXPECT_EQ(open()->setAccessControlListOf("link", list.get()), Error::posix(posix::kNotSupported));
  EXPECT_EQ(object("link")->setAccessControlList(list.get()), Error::posix(posix::kNotSupported));
  EXPECT_FALSE(fileSystem_.openObject(folder_.path("link"), FollowLinks::Yes).value()->setAccessControlList(nullptr));
  EXPECT_EQ(textOf("file"), "");
}

TEST_F(MacAccessControlListTest, WhatIsAlreadySoCostsNoWrite) {
  folder_.makeFile("file");
  folder_.makeFile("plain");
  add("file", "everyone allow read");
  const auto list = listOf("file");
  const auto status = fileSystem_.status(folder_.path("file"), FollowLinks::No).value();
  EXPECT_TRUE(open()->examineRightsOf("file", status, list.get())->hasList);
  EXPECT_FALSE(open()->examineRightsOf("file", status, nullptr)->hasList);
  EXPECT_FALSE(open()->examineRightsOf("plain", status, list.get())->hasList);
  const auto before = changed("file");
  usleep(20'000);  // longer than a tick of the clock that stamps changes
  EXPECT_FALSE(object("file")->setAccessControlList(list.get()));
  EXPECT_FALSE(open()->setAccessControlListOf("file", list.get()));
  EXPECT_EQ(changed("file").tv_sec, before.tv_sec);
  EXPECT_EQ(changed("file").tv_nsec, before.tv_nsec);
}

TEST_F(MacAccessControlListTest, NewObjectsHaveWhatTheirFolderHandsOn) {
  folder_.makeFolder("parent");
  add("parent", "everyone allow read,file_inherit,directory_inherit");
  const auto parent = open(folder_.path("parent"));
  ASSERT_TRUE(parent->createFile("file", 0600));
  ASSERT_FALSE(parent->makeDirectory("folder", 0700));
  for (const char* name : {"file", "folder"}) {
    const auto list = std::move(parent->inheritedAccessControlListOf(name).value());
    ASSERT_NE(list, nullptr) << name;
    EXPECT_EQ(list->externalForm(), listOf(std::string("parent/") + name)->externalForm()) << name;
    EXPECT_NE(textOf(std::string("parent/") + name).find("inherited"), std::string::npos) << name;
  }
}

TEST_F(MacAccessControlListTest, TheExternalFormIsTheLibrarys) {
  folder_.makeFile("file");
  folder_.makeFile("target");
  add("file", "everyone allow read");
  add("file", "group:wheel deny delete");
  const auto form = listOf("file")->externalForm();
  EXPECT_EQ(form.size(), 44U + 2 * 24);
  EXPECT_EQ(form, libraryFormOf("file"));
  const auto again = fileSystem_.accessControlListFromExternalForm(form);
  ASSERT_TRUE(again);
  EXPECT_FALSE(object("target")->setAccessControlList(again->get()));
  EXPECT_EQ(textOf("target"), textOf("file"));
}

TEST_F(MacAccessControlListTest, BytesThatAreNoWholeListAreRefused) {
  folder_.makeFile("file");
  add("file", "everyone allow read");
  const auto form = listOf("file")->externalForm();
  for (std::size_t size = 0; size < form.size(); ++size)
    EXPECT_EQ(fileSystem_.accessControlListFromExternalForm(DataView(form.data(), size)).error(),
              Error::posix(posix::kInvalidArgument))
        << size;
  for (const std::uint32_t count : {2U, 128U, 129U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    auto changedForm = form;
    for (int byte = 0; byte < 4; ++byte) changedForm[36 + byte] = static_cast<std::uint8_t>(count >> (24 - 8 * byte));
    EXPECT_FALSE(fileSystem_.accessControlListFromExternalForm(changedForm)) << count;
  }
  auto wrongMagic = form;
  wrongMagic[0] ^= 1;
  EXPECT_FALSE(fileSystem_.accessControlListFromExternalForm(wrongMagic));
}

TEST_F(MacAccessControlListTest, AListWithoutEntriesIsEmpty) {
  Data form(44, 0);
  form[0] = 0x01, form[1] = 0x2C, form[2] = 0xC1, form[3] = 0x6D;
  const auto list = fileSystem_.accessControlListFromExternalForm(form);
  ASSERT_TRUE(list);
  EXPECT_TRUE((*list)->isEmpty());
  folder_.makeFile("file");
  add("file", "everyone allow read");
  EXPECT_FALSE(object("file")->setAccessControlList(list->get()));
  EXPECT_EQ(listOf("file"), nullptr);
}

TEST(MacAccessControlListFormTest, TheKernelsFormIsCheckedToo) {
  EXPECT_EQ(MacAccessControlList::fromNativeForm(MacAccessControlList::nativeFormOfNone()).value(), nullptr);
  EXPECT_FALSE(MacAccessControlList::fromNativeForm({}));
  EXPECT_FALSE(MacAccessControlList::fromNativeForm(Data(43, 0)));
  EXPECT_FALSE(MacAccessControlList::fromNativeForm(Data(44, 0)));
}

class MacAccessControlListAsRoot : public MacAccessControlListTest {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may act as others";
  }
};

TEST_F(MacAccessControlListAsRoot, WhatIsLockedKeepsItsList) {
  folder_.makeFile("file");
  add("file", "everyone allow read");
  const auto handle = object("file");
  ASSERT_FALSE(handle->setFlags(host::file_flags::kUserImmutable));
  EXPECT_EQ(handle->setAccessControlList(nullptr), Error::posix(posix::kNotPermitted));
  EXPECT_EQ(open()->setAccessControlListOf("file", nullptr), Error::posix(posix::kNotPermitted));
  ASSERT_FALSE(handle->setFlags(0));
  EXPECT_NE(textOf("file"), "");
}

// The kernel's own judgement, not the lists' wording.
TEST_F(MacAccessControlListAsRoot, AnEntryIsInForce) {
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  folder_.makeFile("source");
  add("source", "user:nobody allow read");
  const auto path = folder_.makeFile("target");
  ASSERT_EQ(chmod(path.c_str(), 0600), 0);
  const auto isReadableForNobody = [&] {
    return std::system(("sudo -n -u nobody /bin/cat '" + path + "' >/dev/null 2>&1").c_str()) == 0;
  };
  EXPECT_FALSE(isReadableForNobody());
  EXPECT_FALSE(object("target")->setAccessControlList(listOf("source").get()));
  EXPECT_TRUE(isReadableForNobody());
  EXPECT_FALSE(object("target")->setAccessControlList(nullptr));
  EXPECT_FALSE(isReadableForNobody());
}

}  // namespace
}  // namespace vantrell
