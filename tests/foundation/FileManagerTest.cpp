// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/FileManager.h"
#include "foundation/FileManagerErrors.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/DeepTree.h"
#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/MountedFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using host::FollowLinks;
using tests::addInodeFlags;
using tests::makeDeepTree;
using tests::MountedFileSystem;
using tests::TemporaryFolder;

class FileManagerTest : public testing::Test {
 protected:
  // Of the object itself, unlike std::filesystem::exists.
  bool isThere(const std::string& name) { return fileSystem_.status(folder_.path(name), FollowLinks::No).has_value(); }
  Error removalError(std::int64_t cocoaCode, const std::string& path, std::int64_t posixCode) {
    return {"NSCocoaErrorDomain", cocoaCode,
            Dictionary{{"NSFilePath", path},
                       {"NSUserStringVariant", Array{"Remove"}},
                       {"NSUnderlyingError", Error::posix(posixCode)}}};
  }

  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  TemporaryFolder folder_;
};

class FileManagerAsRoot : public FileManagerTest {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may set flags and mount";
  }
};

TEST_F(FileManagerTest, FollowsLinksToTellWhatExists) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("to file", "file");
  folder_.makeLink("to folder", "folder");
  folder_.makeLink("dangling", "nowhere");
  const auto folderAt = [&](const char* name) {
    bool isDirectory = true;
    const bool exists = fileManager_.fileExistsAtPath(folder_.path(name), &isDirectory);
    EXPECT_EQ(exists, fileManager_.fileExistsAtPath(folder_.path(name)));
    EXPECT_TRUE(exists || !isDirectory);
    return exists ? isDirectory ? "folder" : "other" : "nothing";
  };
  EXPECT_STREQ(folderAt("file"), "other");
  EXPECT_STREQ(folderAt("folder"), "folder");
  EXPECT_STREQ(folderAt("to file"), "other");
  EXPECT_STREQ(folderAt("to folder"), "folder");
  EXPECT_STREQ(folderAt("dangling"), "nothing");
  EXPECT_STREQ(folderAt("missing"), "nothing");
  EXPECT_FALSE(fileManager_.fileExistsAtPath(""));
}

TEST_F(FileManagerTest, ReportsAttributesOfTheObjectItself) {
  const auto path = folder_.makeFile("file", "12345");
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  const auto status = fileSystem_.status(path, FollowLinks::No);
  Dictionary expected{{"NSFileType", "NSFileTypeRegular"},
                      {"NSFileSize", 5U},
                      {"NSFileModificationDate", status->modified},
                      {"NSFilePosixPermissions", 0640U},
                      {"NSFileOwnerAccountID", geteuid()},
                      {"NSFileGroupOwnerAccountID", status->group},
                      {"NSFileReferenceCount", 1U},
                      {"NSFileSystemNumber", status->device},
                      {"NSFileSystemFileNumber", status->inode},
                      {"NSFileExtensionHidden", false}};
  if (status->created) expected.set("NSFileCreationDate", *status->created);
  EXPECT_EQ(fileManager_.attributesOfItemAtPath(path).value(), expected);
  const auto link = fileManager_.attributesOfItemAtPath(folder_.makeLink("link", "file"));
  EXPECT_EQ(*link->find(NSFileType), Value("NSFileTypeSymbolicLink"));
  const auto folder = fileManager_.attributesOfItemAtPath(folder_.path());
  EXPECT_EQ(*folder->find(NSFileType), Value("NSFileTypeDirectory"));
}

TEST_F(FileManagerTest, NamesTypesAsThePlatformDoes) {
  EXPECT_EQ(fileTypeText(host::FileType::Socket), "NSFileTypeSocket");
  EXPECT_EQ(fileTypeText(host::FileType::CharacterDevice), "NSFileTypeCharacterSpecial");
  EXPECT_EQ(fileTypeText(host::FileType::BlockDevice), "NSFileTypeBlockSpecial");
  EXPECT_EQ(fileTypeText(host::FileType::Fifo), "NSFileTypeUnknown");
  EXPECT_EQ(fileTypeText(host::FileType::Whiteout), "NSFileTypeUnknown");
}

TEST_F(FileManagerTest, ReportsMissingAttributesAsReadingError) {
  const auto path = folder_.path("missing");
  EXPECT_EQ(fileManager_.attributesOfItemAtPath(path).error(),
            Error("NSCocoaErrorDomain", 260,
                  Dictionary{{"NSFilePath", path}, {"NSUnderlyingError", Error::posix(posix::kNoEntry)}}));
}

TEST(FileManagerErrors, ChoosesTheCodeByThePosixError) {
  struct Row {
    std::int64_t posix, reading, writing;
  };
  constexpr Row kRows[] = {
      {posix::kNoEntry, 260, 4},       {posix::kNotPermitted, 257, 513},  {posix::kAccessDenied, 257, 513},
      {posix::kNameTooLong, 258, 514}, {posix::kFileTooLarge, 263, 512},  {posix::kExists, 256, 516},
      {posix::kNoSpace, 256, 640},     {posix::kQuotaExceeded, 256, 640}, {posix::kReadOnlyFileSystem, 256, 642},
      {posix::kNotEmpty, 256, 513},    {posix::kInputOutput, 256, 512},   {posix::kBusy, 256, 512},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(fileReadingError(Error::posix(row.posix), "/p").code(), row.reading) << row.posix;
    EXPECT_EQ(fileWritingError(Error::posix(row.posix), "/p", "Remove").code(), row.writing) << row.posix;
  }
}

TEST_F(FileManagerTest, RemovesAFile) {
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.makeFile("file")));
  EXPECT_FALSE(isThere("file"));
}

TEST_F(FileManagerTest, RemovesAPipe) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.path("pipe")));
  EXPECT_FALSE(isThere("pipe"));
}

TEST_F(FileManagerTest, RemovesAFolderWithAllThatItContains) {
  folder_.makeFolder("folder/a/b/c");
  folder_.makeFolder("folder/empty");
  folder_.makeFile("folder/a/b/file");
  folder_.makeFile("folder/.hidden");
  ASSERT_EQ(mkfifo(folder_.path("folder/a/pipe").c_str(), 0600), 0);
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.path("folder")));
  EXPECT_FALSE(isThere("folder"));
}

TEST_F(FileManagerTest, RemovesLinksNotTheirTargets) {
  folder_.makeFolder("target");
  folder_.makeFile("target/file");
  folder_.makeLink("link", "target");
  folder_.makeFolder("folder");
  folder_.makeLink("folder/link", "../target");
  folder_.makeLink("folder/dangling", "nowhere");
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.path("link")));
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.path("folder")));
  EXPECT_FALSE(isThere("link"));
  EXPECT_FALSE(isThere("folder"));
  EXPECT_TRUE(isThere("target/file"));
}

TEST_F(FileManagerTest, ASlashAtTheEndLeadsThroughNoLink) {
  folder_.makeFolder("target");
  folder_.makeFile("target/file");
  folder_.makeLink("link", "target");
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.path("link//")));
  EXPECT_FALSE(isThere("link"));
  EXPECT_TRUE(isThere("target/file"));
}

TEST_F(FileManagerTest, ReportsAMissingObject) {
  const auto path = folder_.path("missing");
  EXPECT_EQ(fileManager_.removeItemAtPath(path), removalError(4, path, posix::kNoEntry));
  EXPECT_EQ(fileManager_.removeItemAtPath(""), removalError(4, "", posix::kNoEntry));
}

TEST_F(FileManagerTest, RefusesFoldersThatCanNeverGoBeforeEmptyingThem) {
  folder_.makeFolder("folder/inner");
  folder_.makeFile("folder/file");
  for (const char* name : {"folder/.", "folder/inner/..", "folder/./"}) {
    const auto error = fileManager_.removeItemAtPath(folder_.path(name));
    ASSERT_TRUE(error) << name;
    EXPECT_EQ(*error->userInfo().find(NSUnderlyingErrorKey), Value(Error::posix(posix::kInvalidArgument)));
  }
  EXPECT_TRUE(isThere("folder/file"));
  EXPECT_TRUE(isThere("folder/inner"));
  // Asked only: what the answer saves is all that there is.
  EXPECT_EQ(fileManager_.refusalToRemoveFolderAtPath("/"), removalError(512, "/", posix::kBusy));
  EXPECT_TRUE(fileManager_.refusalToRemoveFolderAtPath("//"));
  EXPECT_TRUE(fileManager_.refusalToRemoveFolderAtPath("/proc/1/.."));
  EXPECT_FALSE(fileManager_.refusalToRemoveFolderAtPath(folder_.path("folder")));
}

TEST_F(FileManagerTest, RemovesATreeThatNoPathReaches) {
  makeDeepTree(folder_.makeFolder("folder"), 10'000, "a folder with a long name", true);
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.path("folder")));
  EXPECT_FALSE(isThere("folder"));
}

TEST_F(FileManagerTest, ManagesWithFewDescriptors) {
  makeDeepTree(folder_.makeFolder("folder"), 500, "d", true);
  // All but eight descriptors are taken away.
  rlimit limit, saved;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &saved), 0);
  limit = saved;
  const int next = dup(0);
  close(next);
  limit.rlim_cur = static_cast<rlim_t>(next) + 8;
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  const auto error = fileManager_.removeItemAtPath(folder_.path("folder"));
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &saved), 0);
  EXPECT_FALSE(error);
  EXPECT_FALSE(isThere("folder"));
}

TEST_F(FileManagerTest, RemovesAHundredThousandEntries) {
  const auto path = folder_.makeFolder("folder");
  for (int index = 0; index < 100'000; ++index)
    ASSERT_EQ(symlink("x", (path + "/" + std::to_string(index)).c_str()), 0);
  EXPECT_FALSE(fileManager_.removeItemAtPath(path));
  EXPECT_FALSE(isThere("folder"));
}

TEST_F(FileManagerTest, RemovesNamesThatAreNotText) {
  folder_.makeFolder("folder/\xff\xfe");
  folder_.makeFile("folder/\xff\xfe/\x80\n");
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.path("folder")));
  EXPECT_FALSE(isThere("folder"));
}

TEST_F(FileManagerTest, RemovesAnEmptyFolderThatMayNotBeRead) {
  const auto inner = folder_.makeFolder("folder/inner");
  ASSERT_EQ(chmod(inner.c_str(), 0), 0);
  EXPECT_FALSE(fileManager_.removeItemAtPath(folder_.path("folder")));
  EXPECT_FALSE(isThere("folder"));
}

TEST_F(FileManagerAsRoot, StopsAtTheFirstFailureAndNamesWhatFailed) {
  folder_.makeFolder("folder/a");
  const auto file = folder_.makeFile("folder/a/immutable");
  addInodeFlags(file, FS_IMMUTABLE_FL);
  EXPECT_EQ(fileManager_.removeItemAtPath(folder_.path("folder")), removalError(513, file, posix::kNotPermitted));
  EXPECT_EQ(fileManager_.removeItemAtPath(file), removalError(513, file, posix::kNotPermitted));
  EXPECT_TRUE(isThere("folder/a/immutable"));
}

TEST_F(FileManagerAsRoot, NamesWhatFailedAsTextWhateverItsBytes) {
  addInodeFlags(folder_.makeFolder("folder/\xff"), FS_IMMUTABLE_FL);
  EXPECT_EQ(fileManager_.removeItemAtPath(folder_.path("folder")),
            removalError(513, folder_.path("folder/\xEF\xBF\xBD"), posix::kNotPermitted));
}

TEST_F(FileManagerAsRoot, DoesNotEmptyWhatIsMountedInside) {
  folder_.makeFolder("outside");
  folder_.makeFile("outside/file");
  folder_.makeFolder("folder");
  const MountedFileSystem mounted(folder_.makeFolder("folder/mounted"), folder_.path("outside"));
  EXPECT_EQ(fileManager_.removeItemAtPath(folder_.path("folder")),
            removalError(512, folder_.path("folder/mounted"), posix::kBusy));
  EXPECT_TRUE(isThere("outside/file"));
}

TEST_F(FileManagerAsRoot, ReportsAReadOnlyVolume) {
  MountedFileSystem mounted(folder_.makeFolder("mounted"));
  const auto path = folder_.makeFile("mounted/file");
  mounted.makeReadOnly();
  EXPECT_EQ(fileManager_.removeItemAtPath(path), removalError(642, path, posix::kReadOnlyFileSystem));
}

class ResolvingSymlinks : public FileManagerTest {
 protected:
  // The temporary folder itself may be reached through links.
  std::string top_ = std::filesystem::canonical(folder_.path());
  std::string resolved(const std::string& name) {
    return fileManager_.stringByResolvingSymlinksInPath(top_ + "/" + name);
  }
};

TEST_F(ResolvingSymlinks, ReplacesLinksByTheirTargets) {
  folder_.makeFolder("a/b");
  folder_.makeLink("relative", "a");
  folder_.makeLink("a/absolute", top_ + "/a/b/");
  folder_.makeLink("chain", "relative/absolute/.././b");
  EXPECT_EQ(resolved("relative"), top_ + "/a");
  EXPECT_EQ(resolved("relative/absolute"), top_ + "/a/b");
  EXPECT_EQ(resolved("chain"), top_ + "/a/b");
  EXPECT_EQ(resolved("a//b/./"), top_ + "/a/b");
  EXPECT_EQ(fileManager_.stringByResolvingSymlinksInPath("/"), "/");
  EXPECT_EQ(fileManager_.stringByResolvingSymlinksInPath("/../.."), "/");
}

TEST_F(ResolvingSymlinks, TakesDotDotAfterTheLinkBeforeIt) {
  folder_.makeFolder("a/b");
  folder_.makeLink("link", "a/b");
  EXPECT_EQ(resolved("link/.."), top_ + "/a");
}

TEST_F(ResolvingSymlinks, KeepsWhatDoesNotExist) {
  folder_.makeFolder("a");
  folder_.makeFile("file");
  folder_.makeLink("link", "a");
  folder_.makeLink("dangling", "nowhere/at all");
  EXPECT_EQ(resolved("link/missing/../x"), top_ + "/a/missing/../x");
  EXPECT_EQ(resolved("dangling"), top_ + "/nowhere/at all");
  EXPECT_EQ(resolved("file/below"), top_ + "/file/below");
  EXPECT_EQ(fileManager_.stringByResolvingSymlinksInPath("relative/path"), "relative/path");
  EXPECT_EQ(fileManager_.stringByResolvingSymlinksInPath(""), "");
}

TEST_F(ResolvingSymlinks, LeavesOutTheFolderThatNobodyWrites) {
  struct FileSystemWithSuchAFolder final : tests::ForwardingFileSystem {
    using tests::ForwardingFileSystem::ForwardingFileSystem;
    std::string_view unwrittenFolder() const noexcept override { return folder; }
    std::string folder;
  };
  FileSystemWithSuchAFolder fileSystem(fileSystem_);
  fileSystem.folder = top_;
  FileManager fileManager(fileSystem);
  folder_.makeFolder("tmp");
  folder_.makeFolder("tmpfiles");
  folder_.makeFolder("opt");
  folder_.makeFile("tmp/not in the other one");
  EXPECT_EQ(fileManager.stringByResolvingSymlinksInPath(top_ + "/tmp"), "/tmp");
  EXPECT_EQ(fileManager.stringByResolvingSymlinksInPath(top_ + "/tmp/not in the other one"),
            top_ + "/tmp/not in the other one");
  EXPECT_EQ(fileManager.stringByResolvingSymlinksInPath(top_ + "/tmpfiles"), top_ + "/tmpfiles");
  EXPECT_EQ(fileManager.stringByResolvingSymlinksInPath(top_ + "/opt"), top_ + "/opt");
}

TEST_F(ResolvingSymlinks, ComesToAnEndWithLoops) {
  folder_.makeLink("self", "self");
  folder_.makeLink("one", "two/x");
  folder_.makeLink("two", "one/x");
  EXPECT_FALSE(fileManager_.fileExistsAtPath(resolved("self")));
  EXPECT_FALSE(fileManager_.fileExistsAtPath(resolved("one")));
}

TEST_F(ResolvingSymlinks, FollowsFortyLinks) {
  folder_.makeFile("0");
  for (int index = 1; index <= 41; ++index) folder_.makeLink(std::to_string(index), std::to_string(index - 1));
  EXPECT_EQ(resolved("40"), top_ + "/0");
  EXPECT_NE(resolved("41"), top_ + "/0");
}

TEST_F(ResolvingSymlinks, TakesLongPathsWithoutDelay) {
  std::string path = "/";
  for (int index = 0; index < 1'000'000; ++index) path += "./";
  EXPECT_EQ(fileManager_.stringByResolvingSymlinksInPath(path), "/");
  EXPECT_FALSE(fileManager_.fileExistsAtPath(fileManager_.stringByResolvingSymlinksInPath(std::string(1 << 20, 'a'))));
}

}  // namespace
}  // namespace vantrell
