// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The operations that the service carries out itself, as far as they can be tried without ending it.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include "catalogue/ErrorModel.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/support/FlagOverlayFileSystem.h"
#include "tests/support/RedirectedFileSystem.h"
#include "tests/support/ServiceUnderTest.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VersionList.h"

namespace vantrell {
namespace {

using host::LogLevel;

class BuiltIns : public testing::Test {
 protected:
  ErrorOrNil deleteFiles(const Array& paths) { return service_.tool().deleteFileSystemObjectsWithPaths(paths); }
  bool exists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

  tests::ServiceUnderTest service_;
  tests::TemporaryFolder folder_;
};

TEST_F(BuiltIns, NothingIsAlwaysDone) {
  EXPECT_EQ(service_.tool().doNothingWithArguments({}), std::nullopt);
}

TEST_F(BuiltIns, FilesAndEmptyFoldersAreDeleted) {
  const auto file = folder_.makeFile("file", "x");
  const auto empty = folder_.makeFolder("empty");
  EXPECT_EQ(deleteFiles({file, empty}), std::nullopt);
  EXPECT_FALSE(exists(file));
  EXPECT_FALSE(exists(empty));
  EXPECT_TRUE(service_.log().contains(LogLevel::Info, "Deleting file system object '" + file + "'."));
}

TEST_F(BuiltIns, AFolderThatIsNotEmptyIsReportedAndTheNextPathIsDeletedAllTheSame) {
  const auto full = folder_.makeFolder("full");
  folder_.makeFile("full/inside", "x");
  const auto file = folder_.makeFile("file", "x");
  EXPECT_EQ(deleteFiles({full, file}), Error::posix(66));
  EXPECT_TRUE(exists(full));
  EXPECT_FALSE(exists(file));
}

TEST_F(BuiltIns, TheLastFailureIsReported) {
  const auto full = folder_.makeFolder("full");
  folder_.makeFile("full/inside", "x");
  const auto missing = folder_.path("missing");
  EXPECT_EQ(deleteFiles({full, missing}), Error::posix(2));
  EXPECT_EQ(deleteFiles({missing, full}), Error::posix(66));
  EXPECT_EQ(deleteFiles({missing, ""}), Error::posix(22));
}

TEST_F(BuiltIns, WhatIsNoTextIsSkippedSilently) {
  const auto file = folder_.makeFile("file", "x");
  EXPECT_EQ(deleteFiles({5, Data{}, file, Null{}}), std::nullopt);
  EXPECT_FALSE(exists(file));
  EXPECT_EQ(service_.log().countContaining("Deleting file system object"), 1u);
}

TEST_F(BuiltIns, ALinkIsDeletedAndNotItsTarget) {
  const auto file = folder_.makeFile("file", "x");
  const auto link = folder_.path("link");
  ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
  EXPECT_EQ(deleteFiles({link}), std::nullopt);
  EXPECT_TRUE(exists(file));
}

TEST_F(BuiltIns, ObjectsWithSystemFlagsAreNeverChanged) {
  const auto file = folder_.makeFile("file", "x");
  auto& real = *service_.host().fileSystem;
  auto overlay = std::make_unique<tests::FlagOverlayFileSystem>(real);
  auto* const flags = overlay.get();
  auto kept = std::move(service_.host().fileSystem);
  service_.host().fileSystem = std::move(overlay);
  for (const std::uint32_t flag : {0x20000u, 0x40000u, 0x20002u}) {
    flags->forceFlags(file, flag);
    EXPECT_EQ(deleteFiles({file}), Error::posix(5));
    EXPECT_EQ(flags->status(file, host::FollowLinks::No)->flags, flag);
  }
  EXPECT_EQ(flags->flagChanges(), 0u);
  EXPECT_TRUE(exists(file));
  flags->forceFlags(file, 0x2);
  flags->failFlagChanges(Error::posix(1));
  EXPECT_EQ(deleteFiles({file}), Error::posix(5)) << "flags that can't be cleared";
  service_.host().fileSystem = std::move(kept);
}

TEST_F(BuiltIns, AnUninstallationWithAnEmptyPathIsRefusedBeforeAnythingIsChecked) {
  const auto file = folder_.makeFile("file", "x");
  for (const Array& arguments : {Array{4711, file, ""}, Array{4711, "", file}, Array{4711}, Array{"x", file, file}}) {
    EXPECT_EQ(service_.tool().performUninstallWithArguments(arguments), Error::posix(22));
  }
  EXPECT_TRUE(exists(file));
}

TEST_F(BuiltIns, AnUninstallationIsRefusedWhileAnotherClientLives) {
  const auto file = folder_.makeFile("file", "x");
  const auto living = getpid();
  service_.tool().clients().setKeyForClient(living, Data(24));
  service_.tool().clients().setKeyForClient(4711, Data(24));
  const auto process = service_.tool().processInfo().processNameForProcessID(living);
  ASSERT_TRUE(process);
  EXPECT_EQ(service_.tool().performUninstallWithArguments({4711, file, file}),
            privileged_tool_error::busyWithOtherClient(4711, process->name, living));
  EXPECT_TRUE(service_.log().contains(LogLevel::Error, "Uninstall request from PID 4711 was rejected because client '" +
                                                           process->name + "' with PID " + std::to_string(living) +
                                                           " is still working with us."));
  EXPECT_TRUE(exists(file));
  EXPECT_EQ(service_.process().exits(), 0);
}

class BuiltInsAsRoot : public BuiltIns {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "sets inode flags and makes devices";
  }
};

TEST_F(BuiltInsAsRoot, UserFlagsAreClearedBeforeDeletion) {
  const auto file = folder_.makeFile("file", "x");
  auto& fileSystem = *service_.host().fileSystem;
  if (fileSystem.setFlags(file, 0x2 | 0x4, host::FollowLinks::No)) GTEST_SKIP() << "no inode flags here";
  ASSERT_NE(unlink(file.c_str()), 0);
  EXPECT_EQ(deleteFiles({file}), std::nullopt);
  EXPECT_FALSE(exists(file));
}

TEST_F(BuiltInsAsRoot, AWhiteoutIsNotDeleted) {
  const auto whiteout = folder_.path("whiteout");
  ASSERT_EQ(mknod(whiteout.c_str(), S_IFCHR, makedev(0, 0)), 0);
  EXPECT_EQ(deleteFiles({whiteout}), Error::posix(5));
  EXPECT_TRUE(exists(whiteout));
}

/// The probe of the privacy protection, with the fixed folders somewhere else.
class SecurityPolicy : public testing::Test {
 protected:
  struct Answer {
    std::int64_t value;
    std::vector<std::string> foldersOpened;
    bool operator==(const Answer&) const = default;
  };

  Answer probe(const std::string& version, const ErrorOrNil& refusal = std::nullopt) {
    host::LinuxFileSystem real;
    auto redirected = std::make_unique<tests::RedirectedFileSystem>(
        real, std::map<std::string, std::string>{
                  {NSProcessInfoQELAdditions::kVersionListPath, tests::makeVersionList(folder_, version)},
                  {"/var/db/Sandbox", folder_.path("Sandbox")},
                  {"/.Spotlight-V100", folder_.path("Spotlight")}});
    if (refusal) redirected->failOpening("/var/db/Sandbox", *refusal);
    const auto& fileSystem = *redirected;
    tests::ServiceUnderTest service(std::move(redirected));
    const auto error = service.tool().checkSecurityPolicyWithArguments({});
    EXPECT_TRUE(error);
    EXPECT_EQ(error->domain(), privilegedOperationErrorDomain());
    EXPECT_EQ(error->code(), 0);
    EXPECT_EQ(error->userInfo().size(), 1u);
    return {error->userInfo().find("QELSecurityPolicyCheckResult")->asNumber()->signedValue(),
            fileSystem.foldersOpened()};
  }

  tests::TemporaryFolder folder_;
};

TEST_F(SecurityPolicy, Before1014ItIs2WithoutTouchingTheFileSystem) {
  for (const char* version : {"10.13", "10.13.6", "10.8"}) EXPECT_EQ(probe(version), (Answer{2, {}}));
}

TEST_F(SecurityPolicy, AFolderThatCanBeListedAndHasAnEntryIs2) {
  folder_.makeFolder("Sandbox");
  folder_.makeFile("Sandbox/entry", "x");
  for (const char* version : {"10.15", "10.15.7", "11.2.3"}) {
    EXPECT_EQ(probe(version), (Answer{2, {"/var/db/Sandbox"}}));
  }
}

TEST_F(SecurityPolicy, In1014AnotherFolderIsAsked) {
  folder_.makeFolder("Spotlight");
  folder_.makeFile("Spotlight/entry", "x");
  EXPECT_EQ(probe("10.14.6"), (Answer{2, {"/.Spotlight-V100"}}));
}

TEST_F(SecurityPolicy, AMissingOrEmptyFolderIs0) {
  EXPECT_EQ(probe("10.15.7").value, 0);
  folder_.makeFolder("Sandbox");
  EXPECT_EQ(probe("10.15.7").value, 0);
}

TEST_F(SecurityPolicy, AMissingPermissionIs1AndAnyOtherErrorIs0) {
  folder_.makeFolder("Sandbox");
  EXPECT_EQ(probe("10.15", Error::posix(1)).value, 1);
  EXPECT_EQ(probe("10.15", Error::posix(13)).value, 1);
  EXPECT_EQ(probe("10.15", Error::posix(5)).value, 0);
}

}  // namespace
}  // namespace vantrell
