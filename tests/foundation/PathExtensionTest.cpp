// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "foundation/PathUtilities.h"

namespace vantrell {
namespace {

TEST(PathExtension, FollowsTheLastDotOfTheLastComponent) {
  EXPECT_EQ(pathExtension("/a/b.app"), "app");
  EXPECT_EQ(pathExtension("/a/b.tar.gz"), "gz");
  EXPECT_EQ(pathExtension("b.qtz"), "qtz");
  EXPECT_EQ(pathExtension("/a/b.app///"), "app");
  EXPECT_EQ(pathExtension("/a.app/b"), "");
  EXPECT_EQ(pathExtension(".a.txt"), "txt");
  EXPECT_EQ(pathExtension("..txt"), "txt");
}

TEST(PathExtension, IsNoneOfHiddenNamesAndOfNamesThatEndInADot) {
  for (const auto* path : {"", "/", ".", "..", ".app", "/a/.app", "/a/b.", "/a/.."}) {
    EXPECT_EQ(pathExtension(path), "") << path;
  }
}

TEST(PathExtension, IsTakenOffANameWithItsDot) {
  EXPECT_EQ(nameWithoutPathExtension("/a/Word 2.1.app/"), "Word 2.1");
  EXPECT_EQ(nameWithoutPathExtension("/a/plain"), "plain");
  EXPECT_EQ(nameWithoutPathExtension("/a/b."), "b");
  EXPECT_EQ(nameWithoutPathExtension("/a/.app"), ".app");
  EXPECT_EQ(nameWithoutPathExtension("/"), "/");
}

}  // namespace
}  // namespace vantrell
