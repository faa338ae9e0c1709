// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/MacFileSystem.h"
#include "tests/macos/MountedFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell {
namespace {

using host::FileStatus;
using host::FileType;
using host::FollowLinks;
using host::FSCompression;
using host::MacFileSystem;
using host::MountPoints;
namespace file_flags = host::file_flags;

constexpr char kCompressionAttribute[] = "com.apple.decmpfs";

class MacFileSystemTest : public testing::Test {
 protected:
  std::unique_ptr<host::DirectoryHandle> open(const std::string& path) {
    return std::move(fileSystem_.openDirectory(path, FollowLinks::No).value());
  }
  std::unique_ptr<host::ObjectHandle> object(const std::string& name) {
    return std::move(fileSystem_.openObject(folder_.path(name), FollowLinks::No).value());
  }
  std::uint32_t flagsOf(const std::string& name) {
    return fileSystem_.status(folder_.path(name), FollowLinks::No).value().flags;
  }
  bool run(const std::string& line) const {
    return std::system(("cd '" + folder_.path() + "' && " + line).c_str()) == 0;
  }

  MacFileSystem fileSystem_;
  tests::TemporaryFolder folder_;
};

class MacFileSystemAsRoot : public MacFileSystemTest {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may set system flags, make devices and mount";
  }
};

TEST_F(MacFileSystemTest, SetsUserFlagsWithoutRoot) {
  folder_.makeFile("file");
  EXPECT_FALSE(object("file")->setFlags(file_flags::kUserImmutable));
  EXPECT_EQ(flagsOf("file"), file_flags::kUserImmutable);
  EXPECT_FALSE(open(folder_.path())->setFlagsOf("file", 0, FollowLinks::No));
  EXPECT_EQ(flagsOf("file"), 0U);
}

TEST_F(MacFileSystemTest, ReadsTheFlagsThatOthersSet) {
  folder_.makeFile("file");
  folder_.makeFolder("folder");
  ASSERT_TRUE(run("chflags uchg,hidden file && chflags nodump folder"));
  EXPECT_EQ(flagsOf("file"), file_flags::kUserImmutable | UF_HIDDEN);
  EXPECT_EQ(flagsOf("folder"), file_flags::kUserNoDump);
  EXPECT_FALSE(object("file")->setFlags(UF_HIDDEN));
  EXPECT_EQ(flagsOf("file"), static_cast<std::uint32_t>(UF_HIDDEN));
}

TEST_F(MacFileSystemTest, LinksAndPipesHaveFlagsOfTheirOwn) {
  folder_.makeFile("file");
  folder_.makeLink("link", "file");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const auto handle = open(folder_.path());
  for (const char* name : {"link", "pipe"}) {
    EXPECT_FALSE(handle->setFlagsOf(name, file_flags::kUserNoDump, FollowLinks::No)) << name;
    EXPECT_EQ(flagsOf(name), file_flags::kUserNoDump) << name;
    EXPECT_FALSE(object(name)->setFlags(0)) << name;
    EXPECT_EQ(flagsOf(name), 0U) << name;
  }
  EXPECT_EQ(flagsOf("file"), 0U);
}

TEST_F(MacFileSystemAsRoot, SetsSystemFlagsWhichKeepFromBeingRemoved) {
  folder_.makeFile("immutable");
  folder_.makeFile("append");
  const auto handle = open(folder_.path());
  ASSERT_FALSE(handle->setFlagsOf("immutable", file_flags::kSystemImmutable, FollowLinks::No));
  ASSERT_FALSE(handle->setFlagsOf("append", file_flags::kSystemAppend, FollowLinks::No));
  EXPECT_TRUE(run("ls -lO immutable | grep -q schg && ls -lO append | grep -q sappnd"));
  EXPECT_EQ(handle->removeFile("immutable"), Error::posix(posix::kNotPermitted));
  EXPECT_EQ(handle->removeFile("append"), Error::posix(posix::kNotPermitted));
  for (const char* name : {"immutable", "append"}) {
    EXPECT_FALSE(object(name)->setFlags(0));
    EXPECT_FALSE(handle->removeFile(name));
  }
}

TEST_F(MacFileSystemTest, ShowsWhatTheSystemRestricts) {
  const auto status = fileSystem_.status("/System", FollowLinks::No);
  ASSERT_TRUE(status);
  EXPECT_NE(status->flags & file_flags::kSystemRestricted, 0U);
  const auto root = fileSystem_.openDirectory("/", FollowLinks::No);
  EXPECT_EQ((*root)->statusOf("System", FollowLinks::No)->flags, status->flags);
}

TEST_F(MacFileSystemTest, NobodyMakesWhiteouts) {
  EXPECT_EQ(open(folder_.path())->makeSpecialFile("whiteout", {.type = FileType::Whiteout}),
            Error::posix(posix::kNotSupported));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("whiteout")));
}

TEST_F(MacFileSystemTest, TheCompressionAttributeIsShownToThoseWhoAskForIt) {
  folder_.makeFile("plain", std::string(100'000, 'x'));
  ASSERT_TRUE(run("ditto --hfsCompression plain compressed"));
  if ((flagsOf("compressed") & UF_COMPRESSED) == 0) GTEST_SKIP() << "the file system here compresses nothing";
  const auto handle = object("compressed");
  const auto hidden = handle->extendedAttributeNames(FSCompression::Hide).value();
  const auto exposed = handle->extendedAttributeNames(FSCompression::Expose).value();
  EXPECT_EQ(std::ranges::count(hidden, kCompressionAttribute), 0);
  EXPECT_EQ(std::ranges::count(exposed, kCompressionAttribute), 1);
  EXPECT_NE(handle->removeExtendedAttribute(kCompressionAttribute, FSCompression::Hide), std::nullopt);
  EXPECT_EQ(fileSystem_.loadFile(folder_.path("compressed"), 1 << 20).value()->bytes().size(), 100'000U);
}

TEST_F(MacFileSystemTest, ReadsAWholeResourceFork) {
  folder_.makeFile("file");
  const auto handle = object("file");
  const std::string fork(300'000, 'r');
  ASSERT_FALSE(handle->setExtendedAttribute(XATTR_RESOURCEFORK_NAME, bytesOf(fork)));
  EXPECT_EQ(textOf(handle->extendedAttribute(XATTR_RESOURCEFORK_NAME).value()), fork);
  EXPECT_EQ(std::filesystem::file_size(folder_.path("file") + "/..namedfork/rsrc"), fork.size());
}

TEST_F(MacFileSystemTest, TheFinderInformationIsAnAttributeOf32Bytes) {
  folder_.makeFile("file");
  const auto handle = object("file");
  Data information(32, 0);
  information[8] = 0x40;
  ASSERT_FALSE(handle->setExtendedAttribute(fileSystem_.finderInfoAttributeName(), information));
  EXPECT_EQ(handle->extendedAttribute(fileSystem_.finderInfoAttributeName()).value(), information);
  EXPECT_NE(flagsOf("file") & UF_HIDDEN, 0U);
}

TEST_F(MacFileSystemTest, PipesHaveNoAttributes) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const auto handle = object("pipe");
  EXPECT_TRUE(handle->extendedAttributeNames(FSCompression::Expose).value().empty());
  EXPECT_EQ(handle->extendedAttribute("a").error(), Error::posix(posix::kNotSupported));
}

TEST_F(MacFileSystemTest, APipeThatWasReplacedIsNoLongerThere) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const auto handle = object("pipe");
  folder_.makeFile("other");
  ASSERT_EQ(chmod(folder_.path("other").c_str(), 0600), 0);
  std::filesystem::rename(folder_.path("other"), folder_.path("pipe"));
  EXPECT_EQ(handle->status().error(), Error::posix(posix::kNoEntry));
  EXPECT_EQ(handle->setPermissions(0666), Error::posix(posix::kNoEntry));
  EXPECT_EQ(fileSystem_.status(folder_.path("pipe"), FollowLinks::No)->permissions, 0600);
}

TEST_F(MacFileSystemTest, ALinkToAPipeLeadsToThePipeUnopened) {
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  folder_.makeFolder("inner");
  folder_.makeLink("inner/first", "../second");
  folder_.makeLink("second", folder_.path("pipe"));
  const auto handle = fileSystem_.openObject(folder_.path("inner/first"), FollowLinks::Yes);
  ASSERT_TRUE(handle);
  EXPECT_EQ((*handle)->status()->type, FileType::Fifo);
  EXPECT_FALSE((*handle)->setPermissions(0640));
  EXPECT_EQ(fileSystem_.status(folder_.path("pipe"), FollowLinks::No)->permissions, 0640);
  // Had it been opened for reading, a writer would be let in now.
  EXPECT_EQ(::open(folder_.path("pipe").c_str(), O_WRONLY | O_NONBLOCK), -1);
  EXPECT_EQ(errno, ENXIO);
}

TEST_F(MacFileSystemTest, HoldsWhatMayNotBeReadByItsName) {
  if (geteuid() == 0) GTEST_SKIP() << "root may read everything";
  const auto path = folder_.makeFile("file");
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  const auto handle = object("file");
  EXPECT_EQ(handle->status()->permissions, 0);
  EXPECT_FALSE(handle->setPermissions(0600));
  EXPECT_EQ(fileSystem_.status(path, FollowLinks::No)->permissions, 0600);
}

TEST_F(MacFileSystemAsRoot, RefusesMountPointsWhenAsked) {
  const tests::MountedFileSystem mounted(folder_.makeFolder("mounted"));
  folder_.makeFolder("plain");
  const auto handle = open(folder_.path());
  EXPECT_TRUE(handle->openDirectory("mounted", MountPoints::Enter));
  EXPECT_TRUE(handle->openDirectory("plain", MountPoints::Refuse));
  const auto refused = handle->openDirectory("mounted", MountPoints::Refuse);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error(), Error::posix(posix::kCrossDevice));
}

// The data volume bears the system volume's device number where both are of one group.
TEST_F(MacFileSystemTest, RefusesTheDataVolumeWhereItIsMounted) {
  const auto folder = fileSystem_.openDirectory("/System/Volumes", FollowLinks::No);
  if (!folder || !(*folder)->statusOf("Data", FollowLinks::No)) GTEST_SKIP() << "no data volume here";
  EXPECT_EQ((*folder)->openDirectory("Data", MountPoints::Refuse).error(), Error::posix(posix::kCrossDevice));
}

TEST_F(MacFileSystemTest, RemovesEverythingWhileItEnumerates) {
  for (int index = 0; index < 2000; ++index) folder_.makeLink("entry " + std::to_string(index), "nowhere");
  const auto handle = open(folder_.path());
  int removed = 0;
  for (auto entry = handle->next(); entry && *entry; entry = handle->next(), ++removed)
    EXPECT_FALSE(handle->removeFile((*entry)->name.data()));
  EXPECT_EQ(removed, 2000);
  EXPECT_TRUE(std::filesystem::is_empty(folder_.path()));
}

TEST_F(MacFileSystemTest, LeavesNoDescriptorBehind) {
  const auto openDescriptors = [] {
    return std::distance(std::filesystem::directory_iterator("/dev/fd"), std::filesystem::directory_iterator());
  };
  folder_.makeFile("file", std::string(300'000, 'x'));
  folder_.makeFolder("folder");
  ASSERT_EQ(mkfifo(folder_.path("pipe").c_str(), 0600), 0);
  const auto before = openDescriptors();
  for (int round = 0; round < 10; ++round) {
    const auto handle = open(folder_.path());
    EXPECT_TRUE(handle->next().value());
    EXPECT_TRUE(handle->openDirectory("folder", MountPoints::Refuse));
    EXPECT_FALSE(handle->openDirectory("file", MountPoints::Refuse));
    EXPECT_TRUE(handle->openParent());
    EXPECT_TRUE(fileSystem_.locate(folder_.path("file")));
    EXPECT_TRUE(handle->openObject("pipe", FollowLinks::No));
    EXPECT_TRUE(handle->openObject("folder", FollowLinks::No).value()->openDirectory());
    EXPECT_TRUE(handle->openFile("file"));
    EXPECT_FALSE(handle->openFile("folder"));
    EXPECT_TRUE(handle->createFile("new", 0600));
    EXPECT_FALSE(handle->makeDirectory("made", 0770));
    EXPECT_FALSE(handle->removeDirectory("made"));
    EXPECT_FALSE(handle->removeFile("new"));
    EXPECT_TRUE(fileSystem_.loadFile(folder_.path("file"), 1 << 20));
  }
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace vantrell
