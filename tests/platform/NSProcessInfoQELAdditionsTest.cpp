// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host/linux/LinuxFileSystem.h"
#include "host/linux/LinuxProcessTable.h"
#include "platform/NSProcessInfoQELAdditions.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VersionList.h"

namespace vantrell {
namespace {

using tests::makeVersionList;
using tests::TemporaryFolder;

class VersionInformation : public testing::Test {
 protected:
  NSProcessInfoQELAdditions infoFor(const std::string& version) {
    return NSProcessInfoQELAdditions(fileSystem_, processTable_, makeVersionList(folder_, version));
  }
  host::LinuxFileSystem fileSystem_;
  host::LinuxProcessTable processTable_;
  TemporaryFolder folder_;
};

TEST_F(VersionInformation, PacksTheVersionIntoHexadecimalDigits) {
  const auto codeOf = [&](const std::string& version) { return infoFor(version).operatingSystemVersionCode(); };
  EXPECT_EQ(codeOf("10.14.6"), 0x10E6);
  EXPECT_EQ(codeOf("10.8"), 0x1080);
  EXPECT_EQ(codeOf("10.15.7"), 0x10F7);
  EXPECT_EQ(codeOf("10.11"), 0x10B0);
  EXPECT_EQ(codeOf("11.2.3"), 0x1123);
  EXPECT_EQ(codeOf("10.16"), codeOf("11.0"));
  EXPECT_EQ(codeOf("20.1"), 0x2010);
}

TEST_F(VersionInformation, ScansWhatItCan) {
  const auto codeOf = [&](const std::string& version) { return infoFor(version).operatingSystemVersionCode(); };
  EXPECT_EQ(codeOf("beta"), 0x1000);
  EXPECT_EQ(codeOf("10"), 0x1000);
  EXPECT_EQ(codeOf("10.x"), 0x1000);
  EXPECT_EQ(codeOf("abc"), 0x1000);
  EXPECT_EQ(codeOf("11"), 0x1100);
  EXPECT_EQ(codeOf("10.x.7"), 0x1000);
  EXPECT_EQ(codeOf(" 10 . 14 . 6"), 0x10E6);
  EXPECT_EQ(codeOf(".14"), 0x10E0);
  EXPECT_EQ(codeOf("99999999999999999999.1"), 2147483647LL / 10 * 4096 + 7 * 256 + 16);
  const std::string huge(100, '9');
  EXPECT_EQ(codeOf("10." + huge + "." + huge), 0x1000 + 2147483647LL * 17);
  EXPECT_EQ(codeOf("10.15." + std::string(200, '0') + "7"), 0x10F7);
}

TEST_F(VersionInformation, TellsMarketingNameAndManners) {
  struct Row {
    const char* version;
    const char* name;
    bool polite;
  };
  for (const auto& row : {Row{"10.7.5", "Mac OS X", true}, Row{"10.8", "OS X", true}, Row{"10.11", "OS X", true},
                          Row{"10.12", "macOS", false}, Row{"10.15.7", "macOS", false}, Row{"11.0", "macOS", false}}) {
    auto info = infoFor(row.version);
    EXPECT_EQ(info.operatingSystemMarketingName(), row.name) << row.version;
    EXPECT_EQ(info.shouldUIUsePoliteForms(), row.polite) << row.version;
  }
}

TEST_F(VersionInformation, KeepsTheTextsOfTheList) {
  NSProcessInfoQELAdditions info(fileSystem_, processTable_, makeVersionList(folder_, "10.14.6", "18G9323"));
  EXPECT_EQ(info.operatingSystemProductName(), "Mac OS X");
  EXPECT_EQ(info.operatingSystemVersionNumberString(), "10.14.6");
  EXPECT_EQ(info.operatingSystemBuildCode(), "18G9323");
}

TEST_F(VersionInformation, KnowsNothingWithoutAList) {
  const auto empty = folder_.makeFile("empty", "");
  const auto array = folder_.makeFile("array", "<plist><array/></plist>");
  for (const auto& path : {folder_.path("missing"), folder_.path(), empty, array}) {
    NSProcessInfoQELAdditions info(fileSystem_, processTable_, path);
    EXPECT_EQ(info.operatingSystemVersionCode(), 0x1000);
    EXPECT_EQ(info.operatingSystemProductName(), "");
    EXPECT_EQ(info.operatingSystemMarketingName(), "");
    EXPECT_EQ(info.operatingSystemVersionNumberString(), "");
    EXPECT_EQ(info.operatingSystemBuildCode(), "");
    EXPECT_TRUE(info.shouldUIUsePoliteForms());
    EXPECT_FALSE(info.isOperatingSystemAtLeastVersion(0, 0, 0));
  }
}

TEST_F(VersionInformation, AnEmptyVersionCountsAsUnknown) {
  auto info = infoFor("");
  EXPECT_EQ(info.operatingSystemVersionCode(), 0x1000);
  EXPECT_EQ(info.operatingSystemProductName(), "Mac OS X");
  EXPECT_EQ(info.operatingSystemMarketingName(), "Mac OS X");
  EXPECT_TRUE(info.shouldUIUsePoliteForms());
}

TEST_F(VersionInformation, ComparesVersionsNumberByNumber) {
  auto info = infoFor("10.14.6");
  EXPECT_TRUE(info.isOperatingSystemAtLeastVersion(10, 14, 6));
  EXPECT_TRUE(info.isOperatingSystemAtLeastVersion(10, 11, 9));
  EXPECT_TRUE(info.isOperatingSystemAtLeastVersion(9, 99, 99));
  EXPECT_FALSE(info.isOperatingSystemAtLeastVersion(10, 14, 7));
  EXPECT_FALSE(info.isOperatingSystemAtLeastVersion(10, 15, 0));
  EXPECT_FALSE(info.isOperatingSystemAtLeastVersion(11, 0, 0));
}

TEST_F(VersionInformation, IsReadOnceUntilUpdated) {
  const auto path = makeVersionList(folder_, "10.14.6");
  NSProcessInfoQELAdditions info(fileSystem_, processTable_, path);
  EXPECT_EQ(info.operatingSystemVersionCode(), 0x10E6);
  std::filesystem::rename(makeVersionList(folder_, "11.2.3"), path);
  EXPECT_EQ(info.operatingSystemVersionCode(), 0x10E6);
  info.updateVersionInfo();
  EXPECT_EQ(info.operatingSystemVersionCode(), 0x1123);
}

}  // namespace
}  // namespace vantrell
