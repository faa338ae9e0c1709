// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>

#include <gtest/gtest.h>
#include <libproc.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/MacMainBundle.h"

// One of the two lists for this very program, which has no other.
asm(".section __TEXT,__launchd_plist,regular,no_dead_strip\n .ascii \"the launchd list\"\n .text");

namespace vantrell::tests {

TEST(MacMainBundle, NamesTheRunningExecutable) {
  char path[PROC_PIDPATHINFO_MAXSIZE] = {};
  ASSERT_GT(proc_pidpath(getpid(), path, sizeof path), 0);
  struct stat expected;
  ASSERT_EQ(stat(path, &expected), 0) << path;

  const auto named = host::MacMainBundle().executablePath();
  ASSERT_TRUE(named);
  EXPECT_TRUE(named->starts_with('/')) << *named;
  struct stat found;
  ASSERT_EQ(lstat(named->c_str(), &found), 0) << *named;
  EXPECT_EQ(found.st_dev, expected.st_dev);
  EXPECT_EQ(found.st_ino, expected.st_ino);
}

TEST(MacMainBundle, ReadsAListFromItsSection) {
  const auto list = host::MacMainBundle().launchdPropertyList();
  ASSERT_TRUE(list);
  EXPECT_EQ(textOf(*list), "the launchd list");
}

TEST(MacMainBundle, ReportsAListThatIsMissing) {
  EXPECT_TRUE(host::MacMainBundle().informationPropertyList().error().isPosix(posix::kNoEntry));
}

}  // namespace vantrell::tests
