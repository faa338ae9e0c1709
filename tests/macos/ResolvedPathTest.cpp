// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "host/macos/ResolvedPath.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

TEST(ResolvedPath, HasNoLinksAndNoSuperfluousSlashes) {
  EXPECT_EQ(host::resolvedPath("/etc//hosts"), "/private/etc/hosts");
  EXPECT_EQ(host::resolvedPath("/usr/bin/../lib/"), "/usr/lib");
  const TemporaryFolder folder;
  folder.makeFile("file");
  EXPECT_EQ(host::resolvedPath(folder.makeLink("link", "file")), host::resolvedPath(folder.path("file")));
}

TEST(ResolvedPath, IsNothingWhereNothingIs) {
  const TemporaryFolder folder;
  EXPECT_TRUE(host::resolvedPath(folder.path("missing")).error().isPosix(posix::kNoEntry));
  EXPECT_TRUE(host::resolvedPath(folder.makeLink("link", "missing")).error().isPosix(posix::kNoEntry));
  EXPECT_TRUE(host::resolvedPath(std::string("/usr\0/lib", 9)).error().isPosix(posix::kNoEntry));
  EXPECT_TRUE(host::resolvedPath("").error().isPosix(posix::kNoEntry));
}

}  // namespace vantrell::tests
