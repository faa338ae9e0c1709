// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>

#include <gtest/gtest.h>

#include "foundation/Unicode.h"

namespace vantrell {
namespace {

std::string repaired(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto character = decodeUtf8(text);
    appendUtf8(result, character.codePoint);
    text.remove_prefix(character.length);
  }
  return result;
}

TEST(Unicode, EveryScalarValueSurvivesUtf8) {
  for (char32_t codePoint = 0; codePoint <= 0x10FFFF; ++codePoint) {
    if (codePoint >= 0xD800 && codePoint <= 0xDFFF) continue;
    std::string text;
    appendUtf8(text, codePoint);
    const auto character = decodeUtf8(text);
    ASSERT_TRUE(character.wellFormed) << static_cast<unsigned>(codePoint);
    ASSERT_EQ(character.codePoint, codePoint);
    ASSERT_EQ(character.length, text.size());
  }
}

TEST(Unicode, RefusesWhatIsNoUtf8) {
  for (const std::string_view text :
       {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",
        "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF", "\xC3", "\xE2\x82",
        "\xF0\x9F\x98", "ok\xC3(", "12345678\x80"}) {
    EXPECT_FALSE(isWellFormedUtf8(text)) << testing::PrintToString(text);
  }
}

TEST(Unicode, IllFormedUtf8StandsForOneReplacementPerBrokenCharacter) {
  EXPECT_EQ(repaired("a\xF0\x9F\x98z"), "a\uFFFDz");
  EXPECT_EQ(repaired("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(repaired("\xC3"), "\uFFFD");
}

TEST(Unicode, AsciiIsToldByEveryByte) {
  for (std::size_t size = 0; size < 40; ++size) {
    Data bytes(size, 'a');
    EXPECT_TRUE(isAscii(bytes));
    for (std::size_t at = 0; at < size; ++at) {
      bytes[at] = 0x80;
      EXPECT_FALSE(isAscii(bytes)) << at << " of " << size;
      bytes[at] = 'a';
    }
  }
}

TEST(Unicode, Utf16OfBothByteOrdersBecomesUtf8) {
  const Data big = {0, 'a', 0x20, 0xAC, 0xD8, 0x3D, 0xDE, 0x00};
  const Data little = {'a', 0, 0xAC, 0x20, 0x3D, 0xD8, 0x00, 0xDE};
  EXPECT_EQ(utf8FromUtf16(big, ByteOrder::BigEndian), "a\u20AC\U0001F600");
  EXPECT_EQ(utf8FromUtf16(little, ByteOrder::LittleEndian), "a\u20AC\U0001F600");
  EXPECT_TRUE(isWellFormedUtf16(big, ByteOrder::BigEndian));
}

TEST(Unicode, LoneSurrogatesAndOddBytesOfUtf16AreReplaced) {
  const Data bytes = {0xD8, 0x3D, 0, 'a', 0xDE, 0x00, 0xD8, 0x3D, 0x41};
  EXPECT_EQ(utf8FromUtf16(bytes, ByteOrder::BigEndian), "\uFFFDa\uFFFD\uFFFD\uFFFD");
  EXPECT_FALSE(isWellFormedUtf16(bytes, ByteOrder::BigEndian));
  EXPECT_FALSE(isWellFormedUtf16(DataView(bytes).last(1), ByteOrder::BigEndian));
}

}  // namespace
}  // namespace vantrell
