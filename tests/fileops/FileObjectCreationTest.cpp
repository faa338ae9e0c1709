// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fileops/FileObjectCreation.h"
#include "foundation/Value.h"
#include "host/posix/PosixChildProcesses.h"
#include "tests/fileops/AdvancedOpsFixture.h"
#include "tests/support/MountedFileSystem.h"

namespace vantrell {
namespace {

using namespace tests;

class FileObjectCreationTest : public testing::Test {
 protected:
  ErrorOrNil create(const std::string& path, const std::string& typeCode) {
    return creation_.createFileobject({path, typeCode});
  }
  Error notCreated(const std::string& path) {
    return {kOperationDomain, 4,
            Dictionary{{"NSFilePath", path},
                       {"NSLocalizedDescription", "It was not possible to create the specified file system object."},
                       {"QELLocalizedRecoverySuggestionTemplate",
                        "Please verify that objects can be created at the location '$1$'."},
                       {"QELLocalizedRecoverySuggestionParameters", Array{path}}}};
  }
  host::LinuxFileSystem fileSystem_;
  FileManager fileManager_{fileSystem_};
  host::PosixChildProcesses childProcesses_;
  FileObjectCreation creation_{fileManager_, fileSystem_, childProcesses_};
  TemporaryFolder folder_;
};

TEST_F(FileObjectCreationTest, RefusesArgumentsThatMakeNoSense) {
  const auto path = folder_.path("new");
  for (const char* code : {"", "f", "FF", "Z"})
    EXPECT_EQ(create(path, code), Error::posix(posix::kInvalidArgument)) << code;
  EXPECT_EQ(create("", "F"), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(creation_.createFileobject({path}), Error::posix(posix::kInvalidArgument));
  EXPECT_EQ(creation_.createFileobject({path, 5}), Error::posix(posix::kInvalidArgument));
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(FileObjectCreationTest, LeavesWhatIsThereUntouched) {
  const auto file = folder_.makeFile("file", "content");
  for (const char* code : {"F", "D", "X"}) EXPECT_EQ(create(file, code), Error::posix(posix::kExists));
  EXPECT_EQ(std::filesystem::file_size(file), 7U);
}

TEST_F(FileObjectCreationTest, TellsWhereNothingCanBeCreated) {
  const auto path = folder_.path("missing/new");
  EXPECT_EQ(create(path, "F"), notCreated(path));
  EXPECT_EQ(create(path, "X"), notCreated(path));
  EXPECT_EQ(create(path, "D"),
            Error("NSCocoaErrorDomain", 4,
                  Dictionary{{"NSFilePath", path}, {"NSUnderlyingError", Error::posix(posix::kNoEntry)}}));
}

TEST_F(FileObjectCreationTest, DoesNotCreateThroughALink) {
  const auto link = folder_.makeLink("dangling", "planted");
  EXPECT_EQ(create(link, "F"), notCreated(link));
  EXPECT_FALSE(std::filesystem::exists(folder_.path("planted")));
}

class FileObjectCreationAsRoot : public FileObjectCreationTest {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "only root may create what belongs to root";
  }
};

TEST_F(FileObjectCreationAsRoot, ObjectsBelongToRootWithExactPermissionsWhateverTheMask) {
  // New objects get this folder's group, not the process's.
  ASSERT_EQ(chown(folder_.path().c_str(), 1234, 4321), 0);
  ASSERT_EQ(chmod(folder_.path().c_str(), 02777), 0);
  const auto mask = umask(077);
  const struct {
    const char* code;
    mode_t mode;
  } kKinds[] = {{"F", S_IFREG | 0644}, {"D", S_IFDIR | 0755}, {"X", S_IFREG | 0755}};
  for (const auto& kind : kKinds) {
    EXPECT_FALSE(create(folder_.path(kind.code), kind.code));
    struct stat status {};
    ASSERT_EQ(lstat(folder_.path(kind.code).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, kind.mode) << kind.code;
    EXPECT_EQ(status.st_uid, 0U);
    EXPECT_EQ(status.st_gid, 0U);
  }
  EXPECT_EQ(umask(mask), 077U);
}

TEST_F(FileObjectCreationAsRoot, ReportsAReadOnlyVolume) {
  MountedFileSystem mounted(folder_.makeFolder("mounted"));
  mounted.makeReadOnly();
  const auto path = folder_.path("mounted/new");
  EXPECT_EQ(create(path, "F"), notCreated(path));
  EXPECT_EQ(create(path, "D")->code(), 642);
}

}  // namespace
}  // namespace vantrell
