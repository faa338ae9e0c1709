// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <ctime>
#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "host/macos/MacApplications.h"
#include "tests/macos/ToolOutput.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {
namespace {

using testing::Contains;
using testing::IsEmpty;

constexpr char kFinder[] = "/System/Library/CoreServices/Finder.app";

/// As mdls writes dates.
std::string textOf(const std::optional<Date>& date) {
  if (!date) return "(null)";
  const auto seconds = static_cast<std::time_t>(date->seconds);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  char text[64];
  return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S +0000", &parts));
}

}  // namespace

TEST(MacApplications, FindsAnApplicationByItsIdentifier) {
  EXPECT_THAT(host::MacApplications().locationsOfApplicationsWithIdentifier("com.apple.finder"), Contains(kFinder));
}

TEST(MacApplications, TakesUpperAndLowerCaseForTheSame) {
  EXPECT_THAT(host::MacApplications().locationsOfApplicationsWithIdentifier("COM.Apple.FINDER"), Contains(kFinder));
}

TEST(MacApplications, FindsNothingForAnUnknownOrEmptyIdentifier) {
  host::MacApplications applications;
  EXPECT_THAT(applications.locationsOfApplicationsWithIdentifier("com.vantrell.test.nothing"), IsEmpty());
  EXPECT_THAT(applications.locationsOfApplicationsWithIdentifier(""), IsEmpty());
  EXPECT_THAT(applications.locationsOfApplicationsWithIdentifier(std::string("com.apple.finder\0x", 18)), IsEmpty());
  EXPECT_THAT(applications.locationsOfApplicationsWithIdentifier("\xFF"), IsEmpty());
}

TEST(MacApplications, KnowsTheDateThatTheMetadataIndexHas) {
  host::MacApplications applications;
  for (const std::string path : {"/Applications/Safari.app", "/System/Applications/Utilities/Terminal.app", kFinder}) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) continue;
    EXPECT_EQ(textOf(applications.lastUsedDateOfItemAtPath(path)),
              outputOf("/usr/bin/mdls -raw -name kMDItemLastUsedDate " + path + " 2>/dev/null || printf '(null)'"))
        << path;
  }
}

TEST(MacApplications, KnowsNoDateOfWhatIsMissingOrNotIndexed) {
  const TemporaryFolder folder;
  host::MacApplications applications;
  EXPECT_EQ(applications.lastUsedDateOfItemAtPath(folder.path("missing")), std::nullopt);
  EXPECT_EQ(applications.lastUsedDateOfItemAtPath(folder.makeLink("link", "missing")), std::nullopt);
  EXPECT_EQ(applications.lastUsedDateOfItemAtPath(folder.makeFile("file")), std::nullopt);
  EXPECT_EQ(applications.lastUsedDateOfItemAtPath(std::string("/\0x", 3)), std::nullopt);
}

}  // namespace vantrell::tests
