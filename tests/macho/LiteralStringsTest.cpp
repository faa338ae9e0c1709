// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "macho/LiteralStrings.h"
#include "macho/QELMachOProcessor.h"

namespace vantrell::tests {

using macho::LiteralOrder;

TEST(StringFromCString, EndsAtTheFirstZeroByte) {
  EXPECT_EQ(QELMachOProcessor::stringFromCString("__TEXT\0junk", 11), "__TEXT");
}

TEST(StringFromCString, TakesNoMoreThanTheMaximum) {
  EXPECT_EQ(QELMachOProcessor::stringFromCString("sixteen_letters_and_more", 16), "sixteen_letters_");
}

TEST(StringFromCString, GivesTheEmptyStringForAFieldThatBeginsWithZero) {
  EXPECT_EQ(QELMachOProcessor::stringFromCString("\0abc", 4), "");
}

TEST(StringFromCString, GivesNothingForANullPointerOrAMaximumOfZero) {
  EXPECT_EQ(QELMachOProcessor::stringFromCString(nullptr, 16), std::nullopt);
  EXPECT_EQ(QELMachOProcessor::stringFromCString("abc", 0), std::nullopt);
}

TEST(StringFromCString, ReadsUtf8) {
  EXPECT_EQ(QELMachOProcessor::stringFromCString("\xC3\xA9", 16), "é");
}

TEST(StringFromCString, GivesNothingForBytesThatAreNotUtf8) {
  EXPECT_EQ(QELMachOProcessor::stringFromCString("\xFF", 16), std::nullopt);
  EXPECT_EQ(QELMachOProcessor::stringFromCString("ab\xC0\x80", 16), std::nullopt);
  EXPECT_EQ(QELMachOProcessor::stringFromCString("\xED\xA0\x80", 16), std::nullopt);
}

TEST(StringFromCString, GivesNothingWhereTheMaximumCutsACharacter) {
  EXPECT_EQ(QELMachOProcessor::stringFromCString("fifteen_letters\xC3\xA9", 16), std::nullopt);
}

TEST(LiteralOrder, ComparesUtf16CodeUnits) {
  const std::string beyondPlaneZero = "\xF0\x9F\x98\x80";   // U+1F600: units 0xD83D 0xDE00
  const std::string privateUse = "\xEE\x80\x80";            // U+E000
  const std::string lastBeforeSurrogates = "\xED\x9F\xBF";  // U+D7FF
  const std::string replacement = "\xEF\xBF\xBD";           // U+FFFD
  const std::set<std::string, LiteralOrder> sorted = {
      replacement, privateUse, beyondPlaneZero, lastBeforeSurrogates, "a", "", "Z", "a,b"};
  EXPECT_THAT(sorted, testing::ElementsAre("", "Z", "a", "a,b", lastBeforeSurrogates, beyondPlaneZero, privateUse,
                                           replacement));
}

TEST(LiteralOrder, OrdersByCodeNotByLetter) {
  EXPECT_TRUE(LiteralOrder{}("__DATA,__b", "__DATA,_a"));
  EXPECT_TRUE(LiteralOrder{}("Z", "a"));
  EXPECT_TRUE(LiteralOrder{}("ab", "abc"));
  EXPECT_FALSE(LiteralOrder{}("abc", "abc"));
}

}  // namespace vantrell::tests
