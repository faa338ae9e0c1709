// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "bundles/CaseInsensitiveOrder.h"

namespace vantrell {
namespace {

bool areEqual(std::string_view one, std::string_view other) {
  return caseInsensitiveOrder(one, other) == std::weak_ordering::equivalent;
}

TEST(CaseInsensitiveOrder, TakesUpperAndLowerCaseForTheSame) {
  EXPECT_TRUE(areEqual("Safari", "sAFARI"));
  EXPECT_TRUE(areEqual("ÄÖÜÇÑ", "äöüçñ"));
  EXPECT_TRUE(areEqual("ŁŐŽŸ", "łőžÿ"));
  EXPECT_TRUE(areEqual("ΆΣΊΏΣ", "άσίώς"));
  EXPECT_TRUE(areEqual("ЁЖІЯҐӀ", "ёжіяґӏ"));
  EXPECT_TRUE(areEqual("ԱՖ", "աֆ"));
  EXPECT_TRUE(areEqual("ẞ", "ß"));
  EXPECT_TRUE(areEqual("ＡＺ", "ａｚ"));
}

TEST(CaseInsensitiveOrder, KeepsOtherCharactersApart) {
  EXPECT_FALSE(areEqual("×", "÷"));
  EXPECT_FALSE(areEqual("[", "{"));
  EXPECT_FALSE(areEqual("@", "`"));
  EXPECT_FALSE(areEqual("日", "本"));
  EXPECT_FALSE(areEqual("a", "ä"));
}

TEST(CaseInsensitiveOrder, GoesByCharactersAndThenByLength) {
  EXPECT_EQ(caseInsensitiveOrder("abc", "ABD"), std::weak_ordering::less);
  EXPECT_EQ(caseInsensitiveOrder("B", "a"), std::weak_ordering::greater);
  EXPECT_EQ(caseInsensitiveOrder("ab", "ABC"), std::weak_ordering::less);
  EXPECT_EQ(caseInsensitiveOrder("abc", "AB"), std::weak_ordering::greater);
  EXPECT_EQ(caseInsensitiveOrder("", "a"), std::weak_ordering::less);
  EXPECT_EQ(caseInsensitiveOrder("", ""), std::weak_ordering::equivalent);
}

TEST(CaseInsensitiveOrder, TakesBytesThatAreNoCharactersForTheReplacementCharacter) {
  EXPECT_TRUE(areEqual("a\xff", "A\xfe"));
  EXPECT_TRUE(areEqual("\xc3", "\xef\xbf\xbd"));
}

}  // namespace
}  // namespace vantrell
