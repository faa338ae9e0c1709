// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Extended attributes, folder metadata and the moving of folders.

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "fileops/ExtendedAttributes.h"
#include "fileops/FolderMetadata.h"
#include "fileops/FolderMove.h"
#include "fileops/LinkCreation.h"
#include "fileops/MacAttributes.h"
#include "foundation/Value.h"
#include "tests/fileops/AdvancedOpsFixture.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/RunProgram.h"

namespace vantrell {
namespace {

using namespace tests;
using host::FollowLinks;

class FolderMetadata : public testing::Test {
 protected:
  Error posixError(std::int64_t code, const std::string& path) {
    return {"NSPOSIXErrorDomain", code, Dictionary{{"NSFilePath", path}}};
  }
  static void setAttribute(const std::string& path, const char* name, const std::string& value) {
    ASSERT_EQ(lsetxattr(path.c_str(), name, value.data(), value.size(), 0), 0) << path << " " << errno;
  }
  static Data data(const std::string& text) { return {text.begin(), text.end()}; }
  Result<ExtendedAttributeSet> read(const std::string& path, bool notFollowing = false, bool exposing = false) {
    return extendedAttributesForItemAtPath(fileSystem_, path, notFollowing, exposing);
  }
  ErrorOrNil move(const std::string& path, const std::string& newName, bool substitute) {
    return moveFolderAtPath(fileManager_, fileSystem_, path, newName, substitute);
  }
  struct stat statusOf(const std::string& name) {
    struct stat status {};
    EXPECT_EQ(stat(folder_.path(name).c_str(), &status), 0) << name;
    return status;
  }
  std::string listOf(const std::string& name) {
    return runProgram("/usr/bin/getfacl", {"-pcn", folder_.path(name)}).output;
  }

  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  TemporaryFolder folder_;
};

using ExtendedAttributes = FolderMetadata;
using MacAttributes = FolderMetadata;
using LinkCreation = FolderMetadata;

TEST_F(ExtendedAttributes, OfAnObjectWithoutAnyAreAnEmptySet) {
  const auto set = read(folder_.makeFile("file"));
  ASSERT_TRUE(set);
  EXPECT_TRUE(set->empty());
}

TEST_F(ExtendedAttributes, AreReadWithoutTheEmptyOnes) {
  const auto file = folder_.makeFile("file");
  setAttribute(file, "user.one", std::string("1\0x", 3));
  setAttribute(file, "user.empty", "");
  const ExtendedAttributeSet expected{{"user.one", data(std::string("1\0x", 3))}};
  EXPECT_EQ(read(file).value(), expected);
  EXPECT_EQ(read(file, false, true).value(), expected);
  EXPECT_EQ(read(folder_.makeLink("link", "file")).value(), expected);
}

TEST_F(ExtendedAttributes, CannotBeReadWhereNothingIs) {
  EXPECT_EQ(read("").error(), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(read(folder_.path("missing")).error(), posixError(2, folder_.path("missing")));
  const auto dangling = folder_.makeLink("dangling", "nowhere");
  EXPECT_EQ(read(dangling, true).error(), posixError(2, dangling));
}

TEST_F(ExtendedAttributes, AreWrittenAndRemovedThroughLinks) {
  const auto file = folder_.makeFile("file");
  const auto link = folder_.makeLink("link", "file");
  EXPECT_FALSE(setForItemAtPath(fileSystem_, link, bytesOf("value"), "user.name", false));
  EXPECT_EQ(read(file).value(), (ExtendedAttributeSet{{"user.name", data("value")}}));
  EXPECT_FALSE(removeFromItemAtPath(fileSystem_, link, "user.name", false, false));
  EXPECT_TRUE(read(file)->empty());
}

TEST_F(ExtendedAttributes, AreRefusedWithoutPathNameOrValue) {
  const auto file = folder_.makeFile("file");
  const auto invalid = Error::posix(posix::kInvalidArgument);
  EXPECT_EQ(setForItemAtPath(fileSystem_, "", bytesOf("v"), "user.name", false), invalid);
  EXPECT_EQ(setForItemAtPath(fileSystem_, file, {}, "user.name", false), invalid);
  EXPECT_EQ(setForItemAtPath(fileSystem_, file, bytesOf("v"), "", false), invalid);
  EXPECT_EQ(removeFromItemAtPath(fileSystem_, "", "user.name", false, false), invalid);
  EXPECT_EQ(removeFromItemAtPath(fileSystem_, file, "", false, false), invalid);
}

TEST_F(ExtendedAttributes, FailuresBearThePath) {
  const auto file = folder_.makeFile("file");
  const auto missing = folder_.path("missing");
  EXPECT_EQ(setForItemAtPath(fileSystem_, missing, bytesOf("v"), "user.name", true), posixError(2, missing));
  EXPECT_EQ(removeFromItemAtPath(fileSystem_, missing, "user.name", true, true), posixError(2, missing));
  EXPECT_EQ(removeFromItemAtPath(fileSystem_, file, "user.name", false, true), posixError(93, file));
}

class LinkAttributesAsRoot : public FolderMetadata {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may give links attributes";
  }
};

TEST_F(LinkAttributesAsRoot, NamesAreTheLinksAndValuesTheTargets) {
  const auto file = folder_.makeFile("file");
  const auto link = folder_.makeLink("link", "file");
  setAttribute(link, "trusted.both", "of the link");
  setAttribute(link, "trusted.link", "of the link");
  setAttribute(file, "trusted.both", "of the target");
  setAttribute(file, "trusted.target", "of the target");
  EXPECT_EQ(read(link, true).value(), (ExtendedAttributeSet{{"trusted.both", data("of the target")}}));
}

TEST_F(LinkAttributesAsRoot, AreWrittenAndRemovedOnTheLinkItself) {
  const auto file = folder_.makeFile("file");
  const auto link = folder_.makeLink("link", "file");
  EXPECT_FALSE(setForItemAtPath(fileSystem_, link, bytesOf("v"), "trusted.name", true));
  EXPECT_TRUE(read(file)->empty());
  EXPECT_EQ(lgetxattr(link.c_str(), "trusted.name", nullptr, 0), 1);
  EXPECT_FALSE(removeFromItemAtPath(fileSystem_, link, "trusted.name", true, false));
  EXPECT_EQ(lgetxattr(link.c_str(), "trusted.name", nullptr, 0), -1);
}

TEST_F(FolderMetadata, RefusesArgumentsThatMakeNoSense) {
  const auto folder = folder_.makeFolder("folder");
  EXPECT_EQ(move("", "name", false), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(move(folder, "", false), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(move(folder, "../name", false), Error::posix(posix::kInvalidArgument));
}

TEST_F(FolderMetadata, OnlyAFolderIsMoved) {
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(move(file, "name", true), posixError(20, file));
  EXPECT_EQ(move(folder_.path("missing"), "name", true), posixError(20, folder_.path("missing")));
}

TEST_F(FolderMetadata, ANameThatIsTakenChangesNothing) {
  const auto folder = folder_.makeFolder("folder");
  const auto taken = folder_.makeFile("taken");
  EXPECT_EQ(move(folder, "taken", true), posixError(17, taken));
  EXPECT_EQ(move(folder + "/", "..", true), posixError(17, folder_.path("..")));
  EXPECT_TRUE(std::filesystem::is_directory(folder));
}

TEST_F(FolderMetadata, AFolderIsMovedBesideItself) {
  folder_.makeFile(std::filesystem::path(folder_.makeFolder("folder")).filename().string() + "/file");
  EXPECT_FALSE(move(folder_.path("folder"), "moved", false));
  EXPECT_TRUE(std::filesystem::exists(folder_.path("moved/file")));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("folder")));
}

TEST_F(FolderMetadata, OfALinkTheLinkMoves) {
  folder_.makeFolder("target");
  const auto link = folder_.makeLink("link", "target");
  EXPECT_FALSE(move(link, "moved", true));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.path("moved")));
  EXPECT_TRUE(std::filesystem::is_directory(std::filesystem::symlink_status(link)));
}

class FolderMetadataAsRoot : public FolderMetadata {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may change owners";
    const auto folder = folder_.makeFolder("parent/folder");
    folder_.makeFile("parent/folder/file");
    ASSERT_EQ(chown(folder.c_str(), 1234, 4321), 0);
    ASSERT_EQ(chmod(folder.c_str(), 03751), 0);
    setAttribute(folder, "user.name", "value");
    addInodeFlags(folder, FS_NODUMP_FL);
  }
  void expectMetadata(const std::string& name) {
    const auto status = statusOf(name);
    EXPECT_EQ(status.st_uid, 1234U) << name;
    EXPECT_EQ(status.st_gid, 4321U) << name;
    EXPECT_EQ(status.st_mode & 07777, 03751U) << name;
    EXPECT_EQ(read(folder_.path(name)).value(), (ExtendedAttributeSet{{"user.name", data("value")}})) << name;
    EXPECT_TRUE(inodeFlags(folder_.path(name)) & FS_NODUMP_FL) << name;
  }
};

TEST_F(FolderMetadataAsRoot, TheSubstituteLooksAsTheFolderDid) {
  EXPECT_FALSE(move(folder_.path("parent/folder"), "moved", true));
  expectMetadata("parent/folder");
  expectMetadata("parent/moved");
  EXPECT_TRUE(std::filesystem::exists(folder_.path("parent/moved/file")));
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path("parent/folder")));
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path("parent"))) count += entry.exists();
  EXPECT_EQ(count, 2U);
}

TEST_F(FolderMetadataAsRoot, BothFoldersBearTheAccessControlList) {
  const auto folder = folder_.path("parent/folder");
  ASSERT_EQ(runProgram("/usr/bin/setfacl", {"-m", "u:77:rwx,d:u:78:r,g::r", folder}).status, 0);
  const auto before = listOf("parent/folder");
  EXPECT_FALSE(move(folder, "moved", true));
  EXPECT_EQ(listOf("parent/moved"), before);
  EXPECT_EQ(listOf("parent/folder"), before);
}

TEST_F(FolderMetadataAsRoot, AFolderWithoutListHasASubstituteWithoutInheritedEntries) {
  ASSERT_EQ(runProgram("/usr/bin/setfacl", {"-m", "d:u:78:rwx", folder_.path("parent")}).status, 0);
  const auto before = listOf("parent/folder");
  EXPECT_FALSE(move(folder_.path("parent/folder"), "moved", true));
  EXPECT_EQ(listOf("parent/folder"), before);
  EXPECT_EQ(listOf("parent/moved"), before);
}

TEST_F(FolderMetadataAsRoot, IsImposedWithWhatIsTooManyRemoved) {
  const auto other = folder_.makeFolder("other");
  setAttribute(other, "user.other", "value");
  const auto object = fileSystem_.openObject(folder_.path("parent/folder"), FollowLinks::Yes).value();
  enforceFolderMetadata(object->status().value(), extendedAttributesOf(*object).value(), nullptr, fileSystem_, other);
  expectMetadata("other");
  enforceFolderMetadata({}, {}, nullptr, fileSystem_, folder_.path("missing"));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("missing")));
}

TEST_F(FolderMetadataAsRoot, AnImmutableFolderStaysWhereItIs) {
  const auto folder = folder_.path("parent/folder");
  addInodeFlags(folder, FS_IMMUTABLE_FL);
  const auto error = move(folder, "moved", true);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), "NSCocoaErrorDomain");
  EXPECT_EQ(error->code(), 513);
  EXPECT_TRUE(std::filesystem::exists(folder + "/file"));
}

TEST_F(MacAttributes, SetsCodesAndHiddenState) {
  const auto file = folder_.makeFile("file");
  EXPECT_FALSE(setMacAttributesAtPath(fileManager_, file, 0x54455854, 0x74747874, true));
  const auto info = read(file)->at("user.com.apple.FinderInfo");
  EXPECT_EQ(info.size(), 32U);
  EXPECT_EQ(textOf(info).substr(0, 10), std::string("TEXTttxt\x40\0", 10));
  EXPECT_FALSE(setMacAttributesAtPath(fileManager_, file, 0, 0, false));
  EXPECT_EQ(textOf(read(file)->at("user.com.apple.FinderInfo")), std::string(32, '\0'));
}

TEST_F(MacAttributes, ReportsWhatCannotBeChanged) {
  EXPECT_EQ(setMacAttributesAtPath(fileManager_, "", 1, 2, true), Error::posix(posix::kInvalidArgument));
  const auto missing = folder_.path("missing");
  EXPECT_EQ(setMacAttributesAtPath(fileManager_, missing, 1, 2, true),
            Error("NSCocoaErrorDomain", 4,
                  Dictionary{{"NSFilePath", missing}, {"NSUnderlyingError", Error::posix(posix::kNoEntry)}}));
}

TEST_F(LinkCreation, MakesBothKinds) {
  const auto file = folder_.makeFile("file");
  EXPECT_FALSE(createLinkAtPath(fileManager_, folder_.path("hard"), file, true));
  EXPECT_FALSE(createLinkAtPath(fileManager_, folder_.path("soft"), "../as/given//", false));
  EXPECT_EQ(std::filesystem::hard_link_count(file), 2U);
  EXPECT_EQ(std::filesystem::read_symlink(folder_.path("soft")), "../as/given//");
  EXPECT_EQ(createLinkAtPath(fileManager_, folder_.path("x"), folder_.path("missing"), true)->code(), 260);
  EXPECT_EQ(createLinkAtPath(fileManager_, file, "x", false)->code(), 516);
}

}  // namespace
}  // namespace vantrell
