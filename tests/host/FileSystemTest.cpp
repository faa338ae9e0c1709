// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What every file system must do, real or made for tests.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/FileSystem.h"
#include "tests/host/FileSystemContract.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using host::DirectoryHandle;
using host::FileType;
using host::FollowLinks;
using host::MountPoints;
using tests::codeOf;
using tests::TemporaryFolder;
namespace file_flags = host::file_flags;

class FileSystemContract : public tests::FileSystemContractBase {};
INSTANTIATE_TEST_SUITE_P(All, FileSystemContract, tests::fileSystemImplementations(), tests::implementationName);

// The same where setting flags takes root.
class FileSystemFlagsContractAsRoot : public FileSystemContract {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may set the immutable flag";
  }
};
INSTANTIATE_TEST_SUITE_P(All, FileSystemFlagsContractAsRoot, tests::fileSystemImplementations(),
                         tests::implementationName);

std::vector<std::string> namesLeft(DirectoryHandle& handle) {
  std::vector<std::string> names;
  for (auto entry = handle.next(); entry.value(); entry = handle.next()) names.emplace_back((*entry)->name);
  return names;
}

TEST_P(FileSystemContract, TellsTypesApart) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "file");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const auto typeOf = [&](const char* name) { return fileSystem_.status(folder_.path(name), FollowLinks::No)->type; };
  EXPECT_EQ(typeOf("file"), FileType::Regular);
  EXPECT_EQ(typeOf("folder"), FileType::Directory);
  EXPECT_EQ(typeOf("link"), FileType::SymbolicLink);
  EXPECT_EQ(typeOf("pipe"), FileType::Fifo);
  EXPECT_EQ(fileSystem_.status("/dev/null", FollowLinks::No)->type, FileType::CharacterDevice);
}

TEST_P(FileSystemContract, ReportsTheWholeStatus) {
  const auto path = folder_.makeFile("file", "12345");
  ASSERT_EQ(chmod(path.c_str(), 04751), 0);
  std::filesystem::create_hard_link(path, folder_.path("second"));
  const timespec times[] = {{1'000'000'000, 123'456'789}, {-86'400, 500'000'000}};
  ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
  struct stat expected;
  ASSERT_EQ(lstat(path.c_str(), &expected), 0);

  const auto status = fileSystem_.status(path, FollowLinks::No);
  ASSERT_TRUE(status);
  EXPECT_EQ(status->permissions, 04751);
  EXPECT_EQ(status->flags, 0U);
  EXPECT_EQ(status->size, 5U);
  EXPECT_EQ(status->links, 2U);
  EXPECT_EQ(status->owner, expected.st_uid);
  EXPECT_EQ(status->group, expected.st_gid);
  EXPECT_EQ(status->inode, expected.st_ino);
  EXPECT_EQ(status->device, expected.st_dev);
  EXPECT_EQ(status->accessed, (Date{1'000'000'000, 123'456'789}));
  EXPECT_EQ(status->modified, (Date{-86'400, 500'000'000}));
}

TEST_P(FileSystemContract, FollowsLinksOnlyWhenAsked) {
  folder_.makeFile("file", "12345");
  const auto link = folder_.makeLink("link", "file");
  const auto dangling = folder_.makeLink("dangling", "nowhere");
  EXPECT_TRUE(fileSystem_.status(link, FollowLinks::No)->isSymbolicLink());
  EXPECT_EQ(fileSystem_.status(link, FollowLinks::Yes)->size, 5U);
  EXPECT_TRUE(fileSystem_.status(dangling, FollowLinks::No));
  EXPECT_EQ(codeOf(fileSystem_.status(dangling, FollowLinks::Yes)), posix::kNoEntry);
}

TEST_P(FileSystemContract, FailsWithPosixErrorsWithoutUserInfo) {
  const auto missing = fileSystem_.status(folder_.path("missing"), FollowLinks::No);
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error(), Error::posix(posix::kNoEntry));
  EXPECT_FALSE(missing.error().hasUserInfo());
  EXPECT_EQ(codeOf(fileSystem_.status("", FollowLinks::No)), posix::kNoEntry);
  EXPECT_EQ(codeOf(fileSystem_.status(folder_.makeFile("file") + "/below", FollowLinks::No)), posix::kNotDirectory);
  EXPECT_EQ(codeOf(fileSystem_.status(folder_.path(std::string(300, 'n')), FollowLinks::No)), posix::kNameTooLong);
  folder_.makeLink("loop", "loop");
  EXPECT_EQ(codeOf(fileSystem_.status(folder_.path("loop"), FollowLinks::Yes)), posix::kTooManyLinks);
}

TEST_P(FileSystemContract, RefusesPathsWithZeroBytes) {
  const auto path = folder_.makeFile("file") + std::string("\0x", 2);
  EXPECT_EQ(codeOf(fileSystem_.status(path, FollowLinks::No)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.setFlags(path, 0, FollowLinks::No)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.openDirectory(path, FollowLinks::No)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.removeFile(path)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.removeDirectory(path)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.readLink(path)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.loadFile(path, 100)), posix::kInvalidArgument);
  EXPECT_TRUE(std::filesystem::exists(folder_.path("file")));
}

TEST_P(FileSystemContract, ListsEveryEntryOnceWithoutTheDots) {
  std::set<std::string> expected;
  for (int index = 0; index < 3000; ++index) {
    expected.insert("entry " + std::to_string(index));
    folder_.makeLink("entry " + std::to_string(index), "nowhere");
  }
  const auto handle = open(folder_.path());
  const auto names = namesLeft(*handle);
  EXPECT_EQ(names.size(), expected.size());
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()), expected);
  EXPECT_FALSE(handle->next().value());
}

TEST_P(FileSystemContract, TellsTypesWhileListingOrNothing) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "folder");
  const auto handle = open(folder_.path());
  for (auto entry = handle->next(); entry.value(); entry = handle->next()) {
    const auto status = handle->statusOf((*entry)->name.data(), FollowLinks::No);
    EXPECT_THAT((*entry)->type, testing::AnyOf(status->type, FileType::Unknown)) << (*entry)->name;
  }
}

TEST_P(FileSystemContract, ListsNamesThatAreNotText) {
  if (!tests::kNamesAreAnyBytes) GTEST_SKIP() << "file systems here take text only";
  const std::string name = "\xff\xfe\x80 \n\xc3(";
  folder_.makeFile(name);
  const auto handle = open(folder_.path());
  EXPECT_EQ(namesLeft(*handle), std::vector{name});
  EXPECT_EQ(codeOf(handle->removeFile(name.c_str())), 0);
}

TEST_P(FileSystemContract, BeginsAnewWhenRewound) {
  folder_.makeFile("a");
  folder_.makeFile("b");
  const auto handle = open(folder_.path());
  const auto first = namesLeft(*handle);
  handle->rewind();
  EXPECT_EQ(namesLeft(*handle), first);
  EXPECT_EQ(first.size(), 2U);
}

TEST_P(FileSystemContract, GoesOnAtAPositionWithAnotherHandle) {
  for (int index = 0; index < 500; ++index) folder_.makeFile("entry " + std::to_string(index), "");
  const auto whole = namesLeft(*open(folder_.path()));
  for (const std::size_t stop : {std::size_t{0}, std::size_t{1}, std::size_t{250}, whole.size()}) {
    const auto handle = open(folder_.path());
    for (std::size_t index = 0; index < stop; ++index) ASSERT_TRUE(handle->next().value());
    const auto later = open(folder_.path());
    later->setPosition(handle->position());
    EXPECT_EQ(namesLeft(*later), std::vector(whole.begin() + static_cast<std::ptrdiff_t>(stop), whole.end())) << stop;
  }
}

TEST_P(FileSystemContract, HandlesTakeOneNameOnly) {
  folder_.makeFolder("folder/inner");
  const auto handle = open(folder_.path());
  for (const char* name : {"", ".", "..", "/", "folder/inner", "folder/", "/tmp"}) {
    EXPECT_EQ(codeOf(handle->statusOf(name, FollowLinks::No)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->setFlagsOf(name, 0, FollowLinks::No)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->openDirectory(name, MountPoints::Enter)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->removeFile(name)), posix::kInvalidArgument) << name;
    EXPECT_EQ(codeOf(handle->removeDirectory(name)), posix::kInvalidArgument) << name;
  }
  EXPECT_EQ(codeOf(handle->statusOf("...", FollowLinks::No)), posix::kNoEntry);
}

TEST_P(FileSystemContract, HandlesOpenFoldersButNotLinksToThem) {
  folder_.makeFile("file");
  folder_.makeFolder("folder/inner");
  folder_.makeLink("link", "folder");
  const auto handle = open(folder_.path());
  for (const auto mountPoints : {MountPoints::Enter, MountPoints::Refuse}) {
    const auto inner = handle->openDirectory("folder", mountPoints);
    ASSERT_TRUE(inner);
    EXPECT_EQ(namesLeft(**inner), std::vector<std::string>{"inner"});
    EXPECT_THAT(codeOf(handle->openDirectory("link", mountPoints)),
                testing::AnyOf(posix::kNotDirectory, posix::kTooManyLinks));
    EXPECT_EQ(codeOf(handle->openDirectory("file", mountPoints)), posix::kNotDirectory);
    EXPECT_EQ(codeOf(handle->openDirectory("missing", mountPoints)), posix::kNoEntry);
  }
}

TEST_P(FileSystemContract, HandlesFollowLinksOnlyWhenAsked) {
  folder_.makeFile("file", "12345");
  folder_.makeLink("link", "file");
  const auto handle = open(folder_.path());
  EXPECT_TRUE(handle->statusOf("link", FollowLinks::No)->isSymbolicLink());
  EXPECT_EQ(handle->statusOf("link", FollowLinks::Yes)->size, 5U);
  EXPECT_EQ(handle->status()->inode, fileSystem_.status(folder_.path(), FollowLinks::No)->inode);
}

TEST_P(FileSystemContract, HandlesStayWithTheirFolderWhereverItGoes) {
  folder_.makeFolder("before");
  folder_.makeFile("before/file");
  folder_.makeFolder("other");
  const auto handle = open(folder_.path("before"));
  std::filesystem::rename(folder_.path("before"), folder_.path("other/after"));
  folder_.makeFolder("before");
  folder_.makeFile("before/file");

  EXPECT_EQ(codeOf(handle->removeFile("file")), 0);
  EXPECT_TRUE(std::filesystem::exists(folder_.path("before/file")));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("other/after/file")));
  const auto parent = handle->openParent();
  ASSERT_TRUE(parent);
  EXPECT_EQ((*parent)->status()->inode, fileSystem_.status(folder_.path("other"), FollowLinks::No)->inode);
}

TEST_P(FileSystemContract, AHandleOnARemovedFolderIsAtItsEnd) {
  const auto handle = open(folder_.makeFolder("folder"));
  std::filesystem::remove(folder_.path("folder"));
  const auto entry = handle->next();
  ASSERT_TRUE(entry);
  EXPECT_FALSE(*entry);
}

TEST_P(FileSystemContract, OpensFoldersByPath) {
  folder_.makeFolder("folder");
  folder_.makeLink("link", "folder");
  folder_.makeFile("file");
  EXPECT_TRUE(fileSystem_.openDirectory(folder_.path("link"), FollowLinks::Yes));
  EXPECT_THAT(codeOf(fileSystem_.openDirectory(folder_.path("link"), FollowLinks::No)),
              testing::AnyOf(posix::kNotDirectory, posix::kTooManyLinks));
  EXPECT_EQ(codeOf(fileSystem_.openDirectory(folder_.path("file"), FollowLinks::Yes)), posix::kNotDirectory);
  EXPECT_EQ(codeOf(fileSystem_.openDirectory(folder_.path("missing"), FollowLinks::Yes)), posix::kNoEntry);
}

TEST_P(FileSystemContract, RemovesFilesAndLinksButNoFolders) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  folder_.makeLink("link", "folder");
  EXPECT_EQ(codeOf(fileSystem_.removeFile(folder_.path("link"))), 0);
  EXPECT_EQ(codeOf(fileSystem_.removeFile(folder_.path("file"))), 0);
  EXPECT_EQ(codeOf(fileSystem_.removeFile(folder_.path("file"))), posix::kNoEntry);
  EXPECT_THAT(codeOf(fileSystem_.removeFile(folder_.path("folder"))),
              testing::AnyOf(posix::kNotPermitted, posix::kIsDirectory));
  const auto handle = open(folder_.path());
  EXPECT_THAT(codeOf(handle->removeFile("folder")), testing::AnyOf(posix::kNotPermitted, posix::kIsDirectory));
  EXPECT_EQ(namesLeft(*handle), std::vector<std::string>{"folder"});
}

TEST_P(FileSystemContract, RemovesEmptyFoldersOnly) {
  folder_.makeFile("file");
  folder_.makeFolder("full/inner");
  folder_.makeLink("link", "full/inner");
  const auto handle = open(folder_.path());
  EXPECT_EQ(codeOf(fileSystem_.removeDirectory(folder_.path("full"))), posix::kNotEmpty);
  EXPECT_EQ(codeOf(handle->removeDirectory("full")), posix::kNotEmpty);
  EXPECT_EQ(codeOf(fileSystem_.removeDirectory(folder_.path("file"))), posix::kNotDirectory);
  EXPECT_EQ(codeOf(handle->removeDirectory("link")), posix::kNotDirectory);
  EXPECT_EQ(codeOf(fileSystem_.removeDirectory(folder_.path("full/inner"))), 0);
  EXPECT_EQ(codeOf(handle->removeDirectory("full")), 0);
  EXPECT_EQ(codeOf(handle->removeDirectory("full")), posix::kNoEntry);
}

TEST_P(FileSystemContract, ReadsLinksUnresolved) {
  folder_.makeLink("link", "../some//where/");
  EXPECT_EQ(fileSystem_.readLink(folder_.path("link")).value(), "../some//where/");
  EXPECT_EQ(codeOf(fileSystem_.readLink(folder_.makeFile("file"))), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.readLink(folder_.path("missing"))), posix::kNoEntry);
}

TEST_P(FileSystemContract, LoadsFilesOfAnySize) {
  for (const std::size_t size : {0, 1, 4096, 65535, 65536, 300'000}) {
    std::string content(size, '\0');
    for (std::size_t index = 0; index < size; ++index) content[index] = static_cast<char>(index * 7 % 251);
    folder_.makeFile("file", content);
    folder_.makeLink("link", "file");
    const auto contents = fileSystem_.loadFile(folder_.path("link"), size);
    ASSERT_TRUE(contents) << size;
    EXPECT_EQ(textOf((*contents)->bytes()), content);
    std::filesystem::remove(folder_.path("link"));
  }
}

TEST_P(FileSystemContract, LoadsNoMoreThanAllowed) {
  const auto small = folder_.makeFile("small", "12345");
  const auto large = folder_.makeFile("large", std::string(200'000, 'x'));
  EXPECT_EQ(codeOf(fileSystem_.loadFile(small, 5)), 0);
  EXPECT_EQ(codeOf(fileSystem_.loadFile(small, 4)), posix::kFileTooLarge);
  EXPECT_EQ(codeOf(fileSystem_.loadFile(small, 0)), posix::kFileTooLarge);
  EXPECT_EQ(codeOf(fileSystem_.loadFile(large, 199'999)), posix::kFileTooLarge);
}

TEST_P(FileSystemContract, LoadsRegularFilesOnlyAndNeverBlocks) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  EXPECT_EQ(codeOf(fileSystem_.loadFile(folder_.path("pipe"), 100)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.loadFile(folder_.path(), 100)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.loadFile("/dev/zero", 100)), posix::kInvalidArgument);
  EXPECT_EQ(codeOf(fileSystem_.loadFile(folder_.path("missing"), 100)), posix::kNoEntry);
}

TEST_P(FileSystemContract, LoadedContentsOutliveTheFile) {
  const auto path = folder_.makeFile("file", std::string(200'000, 'x'));
  const auto contents = fileSystem_.loadFile(path, 1'000'000);
  std::filesystem::remove(path);
  ASSERT_TRUE(contents);
  EXPECT_TRUE(std::ranges::all_of((*contents)->bytes(), [](auto byte) { return byte == 'x'; }));
}

TEST_P(FileSystemContract, SettingNoFlagsOnAnObjectWithoutAnySucceeds) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  folder_.makeLink("link", "nowhere");
  const auto handle = open(folder_.path());
  EXPECT_EQ(codeOf(fileSystem_.setFlags(folder_.path("pipe"), 0, FollowLinks::No)), 0);
  EXPECT_EQ(codeOf(handle->setFlagsOf("link", 0, FollowLinks::No)), 0);
  EXPECT_EQ(codeOf(handle->setFlags(0)), 0);
  EXPECT_EQ(codeOf(handle->setFlagsOf("missing", 0, FollowLinks::No)), posix::kNoEntry);
}

TEST_P(FileSystemContract, ObjectsOfOtherTypesCanHaveNoFlags) {
  if (tests::kEveryTypeHasFlags) GTEST_SKIP() << "objects of every type have flags here";
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  const auto handle = open(folder_.path());
  constexpr auto kFlag = file_flags::kUserImmutable;
  EXPECT_EQ(codeOf(fileSystem_.setFlags(folder_.path("pipe"), kFlag, FollowLinks::No)), posix::kNotSupported);
  EXPECT_EQ(codeOf(handle->setFlagsOf("pipe", kFlag, FollowLinks::No)), posix::kNotSupported);
  EXPECT_EQ(codeOf(handle->setFlagsOf("link", kFlag, FollowLinks::No)), posix::kNotSupported);
  EXPECT_EQ(codeOf(fileSystem_.setFlags(folder_.path("link"), kFlag, FollowLinks::No)), posix::kNotSupported);
  EXPECT_EQ(handle->statusOf("file", FollowLinks::No)->flags, 0U);
}

TEST_P(FileSystemFlagsContractAsRoot, SetsExactlyTheFlagsGiven) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  const auto handle = open(folder_.path());
  for (const char* name : {"file", "folder"}) {
    for (const auto flags : {file_flags::kUserImmutable | file_flags::kUserNoDump, file_flags::kUserAppend,
                             file_flags::kUserNoDump, std::uint32_t{0}}) {
      EXPECT_EQ(codeOf(fileSystem_.setFlags(folder_.path(name), flags, FollowLinks::No)), 0);
      EXPECT_EQ(fileSystem_.status(folder_.path(name), FollowLinks::No)->flags, flags);
      EXPECT_EQ(codeOf(handle->setFlagsOf(name, 0, FollowLinks::No)), 0);
      EXPECT_EQ(codeOf(handle->setFlagsOf(name, flags, FollowLinks::No)), 0);
      EXPECT_EQ(handle->statusOf(name, FollowLinks::No)->flags, flags);
    }
  }
}

TEST_P(FileSystemFlagsContractAsRoot, SetsFlagsOfAnOpenFolder) {
  const auto handle = open(folder_.makeFolder("folder"));
  EXPECT_EQ(codeOf(handle->setFlags(file_flags::kUserImmutable)), 0);
  EXPECT_EQ(handle->status()->flags, file_flags::kUserImmutable);
  EXPECT_EQ(codeOf(handle->setFlags(0)), 0);
  EXPECT_EQ(fileSystem_.status(folder_.path("folder"), FollowLinks::No)->flags, 0U);
}

TEST_P(FileSystemFlagsContractAsRoot, SetsFlagsThroughALinkWhenAsked) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  const auto handle = open(folder_.path());
  EXPECT_EQ(codeOf(fileSystem_.setFlags(folder_.path("link"), file_flags::kUserImmutable, FollowLinks::Yes)), 0);
  EXPECT_EQ(handle->statusOf("file", FollowLinks::No)->flags, file_flags::kUserImmutable);
  EXPECT_EQ(handle->statusOf("link", FollowLinks::No)->flags, 0U);
  EXPECT_EQ(codeOf(handle->setFlagsOf("link", 0, FollowLinks::Yes)), 0);
  EXPECT_EQ(handle->statusOf("file", FollowLinks::No)->flags, 0U);
}

TEST_P(FileSystemFlagsContractAsRoot, KeepsWhatIsFlaggedFromBeingRemoved) {
  folder_.makeFile("immutable");
  folder_.makeFile("append");
  folder_.makeFile("dump");
  folder_.makeFolder("locked/inner");
  const auto handle = open(folder_.path());
  ASSERT_EQ(codeOf(handle->setFlagsOf("immutable", file_flags::kUserImmutable, FollowLinks::No)), 0);
  ASSERT_EQ(codeOf(handle->setFlagsOf("append", file_flags::kUserAppend, FollowLinks::No)), 0);
  ASSERT_EQ(codeOf(handle->setFlagsOf("dump", file_flags::kUserNoDump, FollowLinks::No)), 0);
  ASSERT_EQ(codeOf(handle->setFlagsOf("locked", file_flags::kUserImmutable, FollowLinks::No)), 0);

  EXPECT_EQ(codeOf(handle->removeFile("immutable")), posix::kNotPermitted);
  EXPECT_EQ(codeOf(fileSystem_.removeFile(folder_.path("append"))), posix::kNotPermitted);
  EXPECT_EQ(codeOf(fileSystem_.removeDirectory(folder_.path("locked/inner"))), posix::kNotPermitted);
  EXPECT_EQ(codeOf(handle->removeFile("dump")), 0);

  for (const char* name : {"immutable", "append", "locked"})
    EXPECT_EQ(codeOf(handle->setFlagsOf(name, 0, FollowLinks::No)), 0);
  EXPECT_EQ(codeOf(handle->removeFile("immutable")), 0);
  EXPECT_EQ(codeOf(handle->removeFile("append")), 0);
  EXPECT_EQ(codeOf(fileSystem_.removeDirectory(folder_.path("locked/inner"))), 0);
}

TEST_P(FileSystemFlagsContractAsRoot, FlagsThatAreSetAlreadyCostNoWrite) {
  const auto path = folder_.makeFile("file");
  ASSERT_EQ(codeOf(fileSystem_.setFlags(path, file_flags::kUserImmutable, FollowLinks::No)), 0);
  struct stat before, after;
  ASSERT_EQ(stat(path.c_str(), &before), 0);
  usleep(20'000);  // longer than a tick of the clock that stamps changes
  EXPECT_EQ(codeOf(fileSystem_.setFlags(path, file_flags::kUserImmutable, FollowLinks::No)), 0);
  ASSERT_EQ(stat(path.c_str(), &after), 0);
  EXPECT_EQ(tests::changeTimeOf(before).tv_sec, tests::changeTimeOf(after).tv_sec);
  EXPECT_EQ(tests::changeTimeOf(before).tv_nsec, tests::changeTimeOf(after).tv_nsec);
  EXPECT_EQ(codeOf(fileSystem_.setFlags(path, 0, FollowLinks::No)), 0);
}

}  // namespace
}  // namespace vantrell
