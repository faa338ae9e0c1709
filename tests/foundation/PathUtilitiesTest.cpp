// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "foundation/PathUtilities.h"

namespace vantrell {
namespace {

TEST(PathUtilities, DeletesTheLastComponent) {
  EXPECT_EQ(stringByDeletingLastPathComponent("/a/b"), "/a");
  EXPECT_EQ(stringByDeletingLastPathComponent("/a/b/"), "/a");
  EXPECT_EQ(stringByDeletingLastPathComponent("/a//b//"), "/a");
  EXPECT_EQ(stringByDeletingLastPathComponent("/a"), "/");
  EXPECT_EQ(stringByDeletingLastPathComponent("/"), "/");
  EXPECT_EQ(stringByDeletingLastPathComponent("//"), "/");
  EXPECT_EQ(stringByDeletingLastPathComponent("a/b"), "a");
  EXPECT_EQ(stringByDeletingLastPathComponent("a"), "");
  EXPECT_EQ(stringByDeletingLastPathComponent(""), "");
}

TEST(PathUtilities, AppendsAComponent) {
  EXPECT_EQ(stringByAppendingPathComponent("/a", "b"), "/a/b");
  EXPECT_EQ(stringByAppendingPathComponent("/a/", "/b/"), "/a/b");
  EXPECT_EQ(stringByAppendingPathComponent("/", "b"), "/b");
  EXPECT_EQ(stringByAppendingPathComponent("", "b"), "b");
  EXPECT_EQ(stringByAppendingPathComponent("/a/", ""), "/a");
  EXPECT_EQ(stringByAppendingPathComponent("/", ""), "/");
  EXPECT_EQ(stringByAppendingPathComponent("", ""), "");
}

TEST(PathUtilities, FindsTheLastComponent) {
  EXPECT_EQ(lastPathComponent("/a/b//"), "b");
  EXPECT_EQ(lastPathComponent("/a/.."), "..");
  EXPECT_EQ(lastPathComponent("b"), "b");
  EXPECT_EQ(lastPathComponent("/"), "/");
  EXPECT_EQ(lastPathComponent(""), "");
}

TEST(PathUtilities, TakesSlashesOffTheEnd) {
  EXPECT_EQ(pathWithoutTrailingSlashes("/a//"), "/a");
  EXPECT_EQ(pathWithoutTrailingSlashes("//"), "/");
  EXPECT_EQ(pathWithoutTrailingSlashes(""), "");
}

TEST(PathUtilities, ShowsBytesThatAreNoText) {
  EXPECT_EQ(displayablePath("/Grüße/日本/😀"), "/Grüße/日本/😀");
  EXPECT_EQ(displayablePath("/a\xff/b"), "/a\xEF\xBF\xBD/b");
  EXPECT_EQ(displayablePath("\x80"), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace vantrell
