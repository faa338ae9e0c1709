// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Replacement of system files.

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "fileops/SystemFileReplacement.h"
#include "foundation/Value.h"
#include "host/posix/PosixChildProcesses.h"
#include "tests/fileops/AdvancedOpsFixture.h"
#include "tests/support/ForwardingFileSystem.h"
#include "tests/support/InodeFlags.h"
#include "tests/support/KilledAtSystemCall.h"
#include "tests/support/MountedFileSystem.h"

namespace vantrell {
namespace {

using namespace tests;
using host::FollowLinks;

const std::string kOld = "old content";
const std::string kNew(100'000, 'n');

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

class SystemFile : public testing::Test {
 protected:
  static Data data(const std::string& text) { return {text.begin(), text.end()}; }
  ErrorOrNil modify(const std::string& path, const std::string& content, bool removeBackup) {
    return replacement_.modifySystemfile({path, data(content), removeBackup});
  }
  Error operationError(std::int64_t code, const char* description, const char* suggestion, const std::string& path) {
    return {kOperationDomain, code,
            Dictionary{{"NSFilePath", path},
                       {"NSLocalizedDescription", description},
                       {"QELLocalizedRecoverySuggestionTemplate", suggestion},
                       {"QELLocalizedRecoverySuggestionParameters", Array{path}}}};
  }

  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  host::PosixChildProcesses childProcesses_;
  SystemFileReplacement replacement_{fileManager_, fileSystem_, childProcesses_};
  TemporaryFolder made_;
  // The temporary folder itself may be reached through links.
  std::string folder_ = std::filesystem::canonical(made_.path());
  std::string path(const std::string& name) { return folder_ + "/" + name; }
};

TEST_F(SystemFile, IsReplacedAndItsBackupKeptOrRemoved) {
  made_.makeFile("hosts", kOld);
  EXPECT_FALSE(modify(path("hosts"), kNew, false));
  EXPECT_EQ(contentOf(path("hosts")), kNew);
  EXPECT_EQ(contentOf(path("hosts.backup")), kOld);
  made_.makeFile("a.conf", kOld);
  EXPECT_FALSE(modify(path("a.conf"), "", true));
  EXPECT_EQ(contentOf(path("a.conf")), "");
  EXPECT_FALSE(std::filesystem::exists(path("a.conf.backup")));
}

TEST_F(SystemFile, RefusesArgumentsThatMakeNoSense) {
  const auto file = made_.makeFile("file", kOld);
  const auto invalid = Error::posix(posix::kInvalidArgument);
  EXPECT_EQ(replacement_.modifySystemfile({}), invalid);
  EXPECT_EQ(replacement_.modifySystemfile({file, "text", true}), invalid);
  EXPECT_EQ(replacement_.modifySystemfile({file, Data{}}), invalid);
  EXPECT_EQ(modify("", kNew, true), invalid);
  EXPECT_EQ(modify(path("missing"), kNew, true), Error::posix(posix::kNoEntry));
  EXPECT_EQ(modify(made_.makeLink("dangling", "nowhere"), kNew, true), Error::posix(posix::kNoEntry));
  EXPECT_EQ(modify(made_.makeFolder("folder"), kNew, true), Error::posix(posix::kIsDirectory));
  EXPECT_EQ(contentOf(file), kOld);
}

TEST_F(SystemFile, ReachedThroughALinkLeavesTheLinkInPlace) {
  made_.makeFolder("inner");
  made_.makeFile("inner/file", kOld);
  const auto link = made_.makeLink("link", "inner/file");
  EXPECT_FALSE(modify(link, kNew, false));
  EXPECT_TRUE(std::filesystem::is_symlink(link));
  EXPECT_EQ(contentOf(path("inner/file")), kNew);
  EXPECT_EQ(contentOf(path("inner/file.backup")), kOld);
  EXPECT_FALSE(std::filesystem::exists(path("link.backup")));
}

TEST_F(SystemFile, AnOlderBackupIsReplaced) {
  made_.makeFile("file", kOld);
  made_.makeFile("file.backup", "older");
  EXPECT_FALSE(modify(path("file"), kNew, false));
  EXPECT_EQ(contentOf(path("file.backup")), kOld);
}

TEST_F(SystemFile, AFolderInTheBackupsPlaceStopsEverything) {
  made_.makeFile("file", kOld);
  made_.makeFolder("file.backup");
  EXPECT_EQ(modify(path("file"), kNew, true),
            operationError(5, "The location for the backup file is blocked by a folder.",
                           "If possible, please remove the folder currently present at the location '$1$'.",
                           path("file.backup")));
  EXPECT_EQ(contentOf(path("file")), kOld);
}

TEST_F(SystemFile, TheBackupKeepsExtendedAttributesAndTheNewFileHasNone) {
  const auto file = made_.makeFile("file", kOld);
  ASSERT_EQ(setxattr(file.c_str(), "user.name", "value", 5, 0), 0);
  EXPECT_FALSE(modify(path("file"), kNew, false));
  EXPECT_EQ(getxattr(path("file.backup").c_str(), "user.name", nullptr, 0), 5);
  EXPECT_EQ(listxattr(path("file").c_str(), nullptr, 0), 0);
}

TEST_F(SystemFile, ClassicCodesAreCarried) {
  made_.makeFile("file", kOld);
  ASSERT_FALSE(
      fileManager_.setAttributes({{NSFileHFSTypeCode, 0x54455854U}, {NSFileExtensionHidden, true}}, path("file")));
  EXPECT_FALSE(modify(path("file"), kNew, true));
  const auto attributes = fileManager_.attributesOfItemAtPath(path("file")).value();
  EXPECT_EQ(*attributes.find(NSFileHFSTypeCode), Value(0x54455854U));
  EXPECT_EQ(*attributes.find(NSFileExtensionHidden), Value(true));
}

// Fails writes, or does something just before new content is created.
class TroubledFileSystem final : public ForwardingFileSystem {
 public:
  using ForwardingFileSystem::ForwardingFileSystem;
  bool failWrites = false;
  std::function<void()> beforeCreation;

  Result<host::Location> locate(const std::string& path) override {
    auto location = real().locate(path);
    if (!location) return location;
    return host::Location{std::make_unique<Folder>(*this, std::move(location->folder)), std::move(location->name)};
  }

 private:
  class Writer final : public host::FileWriter {
   public:
    explicit Writer(std::unique_ptr<host::FileWriter> real) : real_(std::move(real)) {}
    Result<host::FileStatus> status() const override { return real_->status(); }
    ErrorOrNil write(DataView bytes) override {
      (void)real_->write(bytes.first(bytes.size() / 2));
      return Error::posix(posix::kNoSpace);
    }
    ErrorOrNil copyFrom(host::FileReader& source) override { return real_->copyFrom(source); }
    ErrorOrNil synchronize() override { return real_->synchronize(); }

   private:
    std::unique_ptr<host::FileWriter> real_;
  };
  class Folder final : public ForwardingDirectoryHandle {
   public:
    Folder(TroubledFileSystem& owner, std::unique_ptr<host::DirectoryHandle> real)
        : ForwardingDirectoryHandle(std::move(real)), owner_(owner) {}
    Result<std::unique_ptr<host::FileWriter>> createFile(const char* name, std::uint16_t permissions) override {
      if (owner_.beforeCreation) owner_.beforeCreation();
      auto writer = real().createFile(name, permissions);
      if (!writer || !owner_.failWrites) return writer;
      return std::make_unique<Writer>(std::move(*writer));
    }

   private:
    TroubledFileSystem& owner_;
  };
};

TEST_F(SystemFile, AFailedWriteIsNotToldButKeepsTheBackup) {
  made_.makeFile("file", kOld);
  TroubledFileSystem troubled(fileSystem_);
  troubled.failWrites = true;
  SystemFileReplacement replacement(fileManager_, troubled, childProcesses_);
  EXPECT_FALSE(replacement.modifySystemfile({path("file"), data(kNew), true}));
  EXPECT_EQ(contentOf(path("file.backup")), kOld);
  EXPECT_EQ(contentOf(path("file")), kNew.substr(0, kNew.size() / 2));
}

TEST_F(SystemFile, ALinkPlantedInItsPlaceIsNotWrittenThrough) {
  made_.makeFile("file", kOld);
  const auto outside = made_.makeFile("outside", "untouched");
  TroubledFileSystem troubled(fileSystem_);
  troubled.beforeCreation = [&] { std::filesystem::create_symlink(outside, path("file")); };
  SystemFileReplacement replacement(fileManager_, troubled, childProcesses_);
  EXPECT_EQ(replacement.modifySystemfile({path("file"), data(kNew), true}),
            Error("NSCocoaErrorDomain", 516,
                  Dictionary{{"NSFilePath", path("file")}, {"NSUnderlyingError", Error::posix(posix::kExists)}}));
  EXPECT_EQ(contentOf(outside), "untouched");
  EXPECT_EQ(contentOf(path("file.backup")), kOld);
}

TEST_F(SystemFile, AFolderThatVanishesLeavesNothingToSetAttributesOn) {
  made_.makeFolder("folder");
  made_.makeFile("folder/file", kOld);
  TroubledFileSystem troubled(fileSystem_);
  troubled.beforeCreation = [&] { std::filesystem::remove_all(path("folder")); };
  SystemFileReplacement replacement(fileManager_, troubled, childProcesses_);
  const auto error = replacement.modifySystemfile({path("folder/file"), data(kNew), true});
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), 4);
}

class SystemFileAsRoot : public SystemFile {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may change owners, set flags and mount";
  }
  Error protectedError(const std::string& path, std::int64_t cocoaCode, std::int64_t posixCode) {
    auto error = operationError(16, "An object or its parent folder are explicitly protected against changes.",
                                "The object has either been protected manually (not necessarily by permissions), or is "
                                "located on a read-only volume. Please verify that the object at '$1$' and its parent "
                                "folder can be modified.",
                                path);
    auto userInfo = error.userInfo();
    userInfo.set("NSUnderlyingError", Error("NSCocoaErrorDomain", cocoaCode,
                                            Dictionary{{"NSFilePath", path},
                                                       {"NSSourceFilePathErrorKey", path},
                                                       {"NSDestinationFilePath", path + ".backup"},
                                                       {"NSUserStringVariant", Array{"Move"}},
                                                       {"NSUnderlyingError", Error::posix(posixCode)}}));
    return {error.domain(), error.code(), userInfo};
  }
};

TEST_F(SystemFileAsRoot, TheNewFileHasOwnerGroupAndPermissionsOfTheOldOne) {
  made_.makeFile("file", kOld);
  ASSERT_EQ(chown(path("file").c_str(), 1234, 4321), 0);
  ASSERT_EQ(chmod(path("file").c_str(), 06640), 0);
  const auto mask = umask(027);
  EXPECT_FALSE(modify(path("file"), kNew, false));
  EXPECT_EQ(umask(mask), 027U);
  for (const char* name : {"file", "file.backup"}) {
    struct stat status {};
    ASSERT_EQ(stat(path(name).c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 1234U) << name;
    EXPECT_EQ(status.st_gid, 4321U) << name;
    EXPECT_EQ(status.st_mode & 07777, 06640U) << name;
  }
}

TEST_F(SystemFileAsRoot, TheGroupGetsNotWhatOnlyAListGranted) {
  made_.makeFile("file", kOld);
  ASSERT_EQ(std::system(("setfacl -m u:1234:rw,g::r '" + path("file") + "'").c_str()), 0);
  EXPECT_FALSE(modify(path("file"), kNew, true));
  struct stat status {};
  ASSERT_EQ(stat(path("file").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0070, 0040U);
}

TEST_F(SystemFileAsRoot, AnImmutableFileIsUntouched) {
  made_.makeFile("file", kOld);
  addInodeFlags(path("file"), FS_IMMUTABLE_FL);
  EXPECT_EQ(modify(path("file"), kNew, true), protectedError(path("file"), 513, posix::kNotPermitted));
  EXPECT_EQ(contentOf(path("file")), kOld);
  EXPECT_FALSE(std::filesystem::exists(path("file.backup")));
}

TEST_F(SystemFileAsRoot, AFileOnAReadOnlyVolumeIsUntouched) {
  MountedFileSystem mounted(made_.makeFolder("mounted"));
  made_.makeFile("mounted/file", kOld);
  mounted.makeReadOnly();
  EXPECT_EQ(modify(path("mounted/file"), kNew, true),
            protectedError(path("mounted/file"), 642, posix::kReadOnlyFileSystem));
  EXPECT_EQ(contentOf(path("mounted/file")), kOld);
}

TEST_F(SystemFileAsRoot, AnOlderBackupThatCannotBeRemovedStopsEverything) {
  made_.makeFile("file", kOld);
  made_.makeFile("file.backup", "older");
  addInodeFlags(path("file.backup"), FS_IMMUTABLE_FL);
  const auto error = modify(path("file"), kNew, true);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), "NSCocoaErrorDomain");
  EXPECT_EQ(error->code(), 513);
  EXPECT_EQ(contentOf(path("file")), kOld);
}

// Whenever the process dies, one of the two files holds the old content whole, or the target the new one.
TEST_F(SystemFile, KilledAtAnySystemCallLosesNothing) {
  for (const bool removeBackup : {false, true}) {
    ChildEnd end = ChildEnd::Killed;
    for (int stop = 1; end == ChildEnd::Killed; ++stop) {
      ASSERT_LT(stop, 1000);
      std::filesystem::remove_all(path("inner"));
      made_.makeFolder("inner");
      made_.makeFile("inner/file", kOld);
      made_.makeFile("inner/file.backup", "older");
      end = runKilledAtSystemCall(stop, [&] { return !modify(path("inner/file"), kNew, removeBackup); });
      if (end == ChildEnd::NotTraceable) GTEST_SKIP() << "no process may be traced here";
      const auto target = contentOf(path("inner/file"));
      const auto backup = contentOf(path("inner/file.backup"));
      ASSERT_TRUE(target == kOld || backup == kOld || target == kNew) << "stop " << stop;
    }
    EXPECT_EQ(end, ChildEnd::Succeeded);
    EXPECT_EQ(contentOf(path("inner/file")), kNew);
    EXPECT_EQ(std::filesystem::exists(path("inner/file.backup")), !removeBackup);
  }
}

}  // namespace
}  // namespace vantrell
