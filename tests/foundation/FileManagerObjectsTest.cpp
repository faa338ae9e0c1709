// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Attributes, creation, listing and enumeration.

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "foundation/FileManager.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/DeepTree.h"
#include "tests/support/FlagOverlayFileSystem.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using namespace tests;
using host::FollowLinks;
namespace file_flags = host::file_flags;

constexpr char kFinderInfo[] = "user.com.apple.FinderInfo";

class FileManagerObjects : public testing::Test {
 protected:
  Error writingError(std::int64_t code, std::int64_t posixCode, const std::string& path) {
    return {"NSCocoaErrorDomain", code,
            Dictionary{{"NSFilePath", path}, {"NSUnderlyingError", Error::posix(posixCode)}}};
  }
  std::string finderInfo(const std::string& path) {
    std::string info(64, '\0');
    const auto size = getxattr(path.c_str(), kFinderInfo, info.data(), info.size());
    info.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return info;
  }
  mode_t modeOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
  }
  std::vector<std::string> objectsBelow(const std::string& path) {
    auto enumerator = fileManager_.enumeratorAtPath(path);
    std::vector<std::string> objects;
    while (auto object = enumerator.nextObject()) objects.push_back(*object);
    return objects;
  }

  host::LinuxFileSystem linux_;
  FlagOverlayFileSystem fileSystem_{linux_};
  FileManager fileManager_{fileSystem_};
  TemporaryFolder folder_;
};

TEST_F(FileManagerObjects, SetsPermissionsDatesAndFlags) {
  const auto path = folder_.makeFile("file");
  const Date date{1'000'000'000, 5};
  EXPECT_FALSE(fileManager_.setAttributes({{NSFilePosixPermissions, 0604U},
                                           {NSFileModificationDate, date},
                                           {NSFileImmutable, true},
                                           {"NSFileSomethingElse", 5}},
                                          path));
  const auto attributes = fileManager_.attributesOfItemAtPath(path).value();
  EXPECT_EQ(*attributes.find(NSFilePosixPermissions), Value(0604U));
  EXPECT_EQ(*attributes.find(NSFileModificationDate), Value(date));
  EXPECT_EQ(*attributes.find(NSFileImmutable), Value(true));
  EXPECT_FALSE(attributes.contains(NSFileAppendOnly));
  EXPECT_TRUE(finderInfo(path).empty());
}

TEST_F(FileManagerObjects, LiftsFlagsForTheChangeAndPutsThemBack) {
  const auto path = folder_.makeFile("file");
  fileSystem_.forceFlags(path, file_flags::kUserImmutable | file_flags::kUserAppend | file_flags::kUserNoDump);
  EXPECT_FALSE(fileManager_.setAttributes({{NSFilePosixPermissions, 0600U}, {NSFileAppendOnly, false}}, path));
  EXPECT_EQ(modeOf(path), 0600U);
  EXPECT_EQ(fileSystem_.status(path, FollowLinks::No)->flags, file_flags::kUserImmutable | file_flags::kUserNoDump);
}

TEST_F(FileManagerObjects, SetsTheAttributesOfALinksTarget) {
  const auto path = folder_.makeFile("file");
  EXPECT_FALSE(fileManager_.setAttributes({{NSFilePosixPermissions, 0600U}}, folder_.makeLink("link", "file")));
  EXPECT_EQ(modeOf(path), 0600U);
}

TEST_F(FileManagerObjects, ReportsAMissingObjectWhoseAttributesAreSet) {
  const auto path = folder_.path("missing");
  EXPECT_EQ(fileManager_.setAttributes({}, path), writingError(4, posix::kNoEntry, path));
  EXPECT_EQ(fileManager_.setHiddenState(true, path), writingError(4, posix::kNoEntry, path));
}

TEST_F(FileManagerObjects, KeepsClassicCodesInBigEndianFinderInformation) {
  const auto path = folder_.makeFile("file");
  EXPECT_FALSE(fileManager_.setAttributes(
      {{NSFileHFSTypeCode, 0x54455854U}, {NSFileHFSCreatorCode, 0x01020304U}, {NSFileExtensionHidden, true}}, path));
  EXPECT_FALSE(fileManager_.setHiddenState(true, path));
  EXPECT_EQ(finderInfo(path), std::string("TEXT\x01\x02\x03\x04\x40\x10", 10) + std::string(22, '\0'));
  const auto attributes = fileManager_.attributesOfItemAtPath(path).value();
  EXPECT_EQ(*attributes.find(NSFileHFSTypeCode), Value(0x54455854U));
  EXPECT_EQ(*attributes.find(NSFileHFSCreatorCode), Value(0x01020304U));
  EXPECT_EQ(*attributes.find(NSFileExtensionHidden), Value(true));
  EXPECT_FALSE(fileManager_.setHiddenState(false, path));
  EXPECT_EQ(finderInfo(path).substr(8, 2), std::string("\0\x10", 2));
}

TEST_F(FileManagerObjects, CreatesFoldersOnTheWayOnlyWhenAsked) {
  const auto path = folder_.path("a/b/c");
  EXPECT_EQ(fileManager_.createDirectoryAtPath(path, false), writingError(4, posix::kNoEntry, path));
  EXPECT_FALSE(fileManager_.createDirectoryAtPath(path, true, {{NSFilePosixPermissions, 0700U}}));
  EXPECT_EQ(modeOf(path), 0700U);
  EXPECT_EQ(modeOf(folder_.path("a/b")), 0755U);
  EXPECT_FALSE(fileManager_.createDirectoryAtPath(path, true));
  EXPECT_EQ(fileManager_.createDirectoryAtPath(path, false), writingError(516, posix::kExists, path));
  const auto file = folder_.makeFile("file");
  EXPECT_EQ(fileManager_.createDirectoryAtPath(file, true), writingError(516, posix::kExists, file));
  EXPECT_EQ(fileManager_.createDirectoryAtPath("/", false), writingError(516, posix::kExists, "/"));
}

TEST_F(FileManagerObjects, CreatesFilesWithContentsAndNeverWritesIntoWhatIsThere) {
  const auto path = folder_.path("file");
  EXPECT_TRUE(fileManager_.createFileAtPath(path, bytesOf("text"), {{NSFilePosixPermissions, 0640U}}));
  EXPECT_EQ(std::filesystem::file_size(path), 4U);
  EXPECT_EQ(modeOf(path), 0640U);
  EXPECT_FALSE(fileManager_.createFileAtPath(path, {}));
  EXPECT_EQ(std::filesystem::file_size(path), 4U);
  EXPECT_FALSE(fileManager_.createFileAtPath(folder_.makeLink("dangling", "planted"), bytesOf("text")));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("planted")));
  EXPECT_FALSE(fileManager_.createFileAtPath(folder_.path("missing/file"), {}));
  EXPECT_FALSE(fileManager_.createFileAtPath("", {}));
}

TEST_F(FileManagerObjects, CreatesLinksWithAnyText) {
  EXPECT_FALSE(fileManager_.createSymbolicLinkAtPath(folder_.path("link"), "../no/where"));
  EXPECT_EQ(std::filesystem::read_symlink(folder_.path("link")), "../no/where");
  EXPECT_EQ(fileManager_.createSymbolicLinkAtPath(folder_.path("link"), "x"),
            writingError(516, posix::kExists, folder_.path("link")));
}

TEST_F(FileManagerObjects, ListsAFoldersNamesThroughALink) {
  folder_.makeFolder("folder/.hidden/below");
  folder_.makeFile("folder/file");
  auto names = fileManager_.contentsOfDirectoryAtPath(folder_.makeLink("link", "folder")).value();
  std::ranges::sort(names);
  EXPECT_EQ(names, (std::vector<std::string>{".hidden", "file"}));
  const auto missing = folder_.path("missing");
  EXPECT_EQ(fileManager_.contentsOfDirectoryAtPath(missing).error(), writingError(260, posix::kNoEntry, missing));
}

TEST_F(FileManagerObjects, EnumeratesRelativePathsAFolderBeforeItsContents) {
  folder_.makeFolder("top/a/b");
  folder_.makeFile("top/a/b/file");
  folder_.makeLink("top/link", "a");
  auto objects = objectsBelow(folder_.path("top"));
  EXPECT_LT(std::ranges::find(objects, "a"), std::ranges::find(objects, "a/b"));
  EXPECT_LT(std::ranges::find(objects, "a/b"), std::ranges::find(objects, "a/b/file"));
  std::ranges::sort(objects);
  EXPECT_EQ(objects, (std::vector<std::string>{"a", "a/b", "a/b/file", "link"}));
  EXPECT_EQ(objectsBelow(folder_.makeLink("to top", "top")).size(), 4U);
  EXPECT_TRUE(objectsBelow(folder_.path("missing")).empty());
  EXPECT_TRUE(objectsBelow(folder_.makeFile("file")).empty());
}

TEST_F(FileManagerObjects, SkipsTheDescendantsOfTheFolderJustMet) {
  folder_.makeFolder("top/a/b");
  folder_.makeFolder("top/c/d");
  folder_.makeFile("top/file");
  auto enumerator = fileManager_.enumeratorAtPath(folder_.path("top"));
  std::vector<std::string> objects;
  while (auto object = enumerator.nextObject()) {
    EXPECT_EQ(enumerator.entry().path(), folder_.path("top/" + *object));
    objects.push_back(*object);
    if (*object == "a" || *object == "file") enumerator.skipDescendants();
  }
  std::ranges::sort(objects);
  EXPECT_EQ(objects, (std::vector<std::string>{"a", "c", "c/d", "file"}));
  EXPECT_FALSE(enumerator.nextObject());
  enumerator.skipDescendants();
}

}  // namespace
}  // namespace vantrell
