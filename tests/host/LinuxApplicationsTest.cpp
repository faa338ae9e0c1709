// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include "foundation/PropertyList.h"
#include "foundation/Value.h"
#include "host/linux/LinuxApplications.h"
#include "host/linux/LinuxFileSystem.h"
#include "tests/host/ApplicationsContract.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

constexpr char kIdentifier[] = "org.example.Editor";
constexpr char kAttribute[] = "user.com.apple.lastuseddate#PS";

void writeLastUsedDate(const std::string& path, const std::string& bytes) {
  ASSERT_EQ(setxattr(path.c_str(), kAttribute, bytes.data(), bytes.size(), 0), 0)
      << "the temporary folder's file system has no user attributes";
}
std::string littleEndian(std::uint64_t number) {
  std::string bytes;
  for (int i = 0; i < 8; ++i) bytes += static_cast<char>(number >> 8 * i);
  return bytes;
}

class LinuxCandidate final : public ApplicationsCandidate {
 public:
  host::Applications& applications() override { return applications_; }
  std::string addApplication(const std::string& name, const std::string& identifier) override {
    folder_.makeFolder(name + "/Contents");
    folder_.makeFile(name + "/Contents/Info.plist",
                     textOf(binaryPropertyListFromValue(Dictionary{{"CFBundleIdentifier", identifier}}).value()));
    return folder_.path(name);
  }
  void setLastUsedDate(const std::string& path, const Date& date) override {
    writeLastUsedDate(path, littleEndian(static_cast<std::uint64_t>(date.seconds)) + littleEndian(date.nanoseconds));
  }

 private:
  TemporaryFolder folder_;
  host::LinuxFileSystem fileSystem_;
  host::LinuxApplications applications_{fileSystem_, {folder_.path()}, {}};
};

INSTANTIATE_TEST_SUITE_P(Linux, ApplicationsContract,
                         testing::Values(ApplicationsImplementation{"Linux",
                                                                    [] { return std::make_unique<LinuxCandidate>(); }}),
                         ApplicationsContract::nameOf);

class LinuxApplicationsTest : public testing::Test {
 protected:
  std::string makeApplication(const std::string& name, const std::string& file = "Contents/Info.plist",
                              const std::string& identifier = kIdentifier) {
    folder_.makeFolder(std::filesystem::path(name + "/" + file).parent_path().string());
    folder_.makeFile(name + "/" + file, "{ CFBundleIdentifier = \"" + identifier + "\"; }");
    return folder_.path(name);
  }
  std::vector<std::string> find(const host::LinuxApplications::Limits& limits = {}) {
    host::LinuxApplications applications(fileSystem_, {folder_.path("missing"), folder_.path()}, limits);
    return applications.locationsOfApplicationsWithIdentifier(kIdentifier);
  }
  std::optional<Date> lastUsed(const std::string& path) {
    return host::LinuxApplications(fileSystem_).lastUsedDateOfItemAtPath(path);
  }

  TemporaryFolder folder_;
  host::LinuxFileSystem fileSystem_;
};

TEST_F(LinuxApplicationsTest, AreLookedForInFoldersWithinFoldersToSomeDepth) {
  const auto utility = makeApplication("Utilities/A.app");
  const auto deep = makeApplication("Maker/Suite/B.app");
  makeApplication("Maker/Suite/Deeper/C.app");
  makeApplication("D.app/Contents/Applications/Inner.app", "Contents/Info.plist");
  EXPECT_THAT(find(), UnorderedElementsAre(utility, deep));
}

TEST_F(LinuxApplicationsTest, KeepTheirInformationInTheContentsFolder) {
  const auto path = makeApplication("A.app", "Contents/Info-macos.plist");
  makeApplication("B.app", "Info.plist");
  makeApplication("C.bundle");
  EXPECT_THAT(find(), ElementsAre(path));
}

TEST_F(LinuxApplicationsTest, AreNotLookedForThroughLinks) {
  const auto path = makeApplication("Real/A.app");
  folder_.makeLink("Link.app", "Real/A.app");
  folder_.makeLink("Real/self", ".");
  folder_.makeLink("up", "..");
  EXPECT_THAT(find(), ElementsAre(path));
}

TEST_F(LinuxApplicationsTest, WithHostileInformationArePassedOver) {
  const auto path = makeApplication("Good.app");
  folder_.makeFolder("Pipe.app/Contents");
  ASSERT_EQ(mkfifo(folder_.path("Pipe.app/Contents/Info.plist").c_str(), 0600), 0);
  folder_.makeFolder("Endless.app/Contents");
  folder_.makeLink("Endless.app/Contents/Info.plist", "/dev/zero");
  std::filesystem::resize_file(makeApplication("Huge.app") + "/Contents/Info.plist", std::uintmax_t{4} << 30);
  folder_.makeFolder("Deep.app/Contents");
  folder_.makeFile("Deep.app/Contents/Info.plist", std::string(1'000'000, '('));
  folder_.makeFile("File.app");
  EXPECT_THAT(find(), ElementsAre(path));
}

TEST_F(LinuxApplicationsTest, AreFoundWithinTheLimits) {
  for (int i = 0; i < 20; ++i) makeApplication(std::to_string(i) + ".app");
  EXPECT_EQ(find().size(), 20u);
  EXPECT_EQ(find({.applications = 7}).size(), 7u);
  EXPECT_EQ(find({.entries = 5}).size(), 5u);
  EXPECT_THAT(find({.depth = 1}), testing::SizeIs(20));
}

TEST_F(LinuxApplicationsTest, UsualFoldersAreTheSystemsAndThisUsers) {
  const auto folders = host::LinuxApplications::usualApplicationFolders();
  EXPECT_THAT(folders, testing::Contains("/Applications"));
  EXPECT_THAT(folders, testing::Contains("/System/Applications"));
  for (const auto& folder : folders) EXPECT_TRUE(folder.starts_with('/')) << folder;
}

TEST_F(LinuxApplicationsTest, LastUsedDateHasToHaveItsForm) {
  const auto path = folder_.makeFile("item");
  for (const auto& bytes : {std::string(), std::string(15, '\0'), std::string(17, '\0'),
                            littleEndian(1) + littleEndian(1'000'000'000), std::string(16, '\xff')}) {
    writeLastUsedDate(path, bytes);
    EXPECT_EQ(lastUsed(path), std::nullopt) << bytes.size();
  }
}

TEST_F(LinuxApplicationsTest, LastUsedDateIsThatOfALinksTarget) {
  const auto path = folder_.makeFile("item");
  writeLastUsedDate(path, littleEndian(77) + littleEndian(5));
  EXPECT_EQ(lastUsed(folder_.makeLink("link", path)), (Date{77, 5}));
  EXPECT_EQ(lastUsed(folder_.makeLink("dangling", "nowhere")), std::nullopt);
  EXPECT_EQ(lastUsed(std::string("a\0b", 3)), std::nullopt);
}

}  // namespace
}  // namespace vantrell::tests
