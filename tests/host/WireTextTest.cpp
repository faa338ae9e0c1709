// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>

#include <gtest/gtest.h>

#include "host/linux/WireText.h"

namespace vantrell::tests {
namespace {

using namespace std::string_literals;
using host::isSendableText;
using host::sendableText;

const std::string kReplacement = "\xEF\xBF\xBD";

TEST(WireText, KeepsTextOfEveryLength) {
  for (const std::string& text :
       {""s, "a"s, "twelve bytes"s, "\xC3\xA4"s, "\xE2\x82\xAC"s, "\xF0\x9F\x98\x80"s, "\xF4\x8F\xBF\xBD"s,
        "\xED\x9F\xBF"s, "\xEE\x80\x80"s, "seven..\xC3\xA4 and more"s, "\x01\x7F"s}) {
    EXPECT_TRUE(isSendableText(text)) << text;
    EXPECT_EQ(sendableText(text), text);
  }
}

TEST(WireText, ReplacesZeroBytesWhereverTheyStand) {
  for (std::size_t length = 1; length < 20; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      std::string text(length, 'x');
      text[at] = '\0';
      EXPECT_FALSE(isSendableText(text));
      EXPECT_EQ(sendableText(text), std::string(at, 'x') + kReplacement + std::string(length - at - 1, 'x'));
    }
  }
}

TEST(WireText, ReplacesEachByteThatBelongsToNoCharacter) {
  EXPECT_EQ(sendableText("\xFF"), kReplacement);
  EXPECT_EQ(sendableText("a\x80z"), "a" + kReplacement + "z");
  EXPECT_EQ(sendableText("\xC3"), kReplacement);
  EXPECT_EQ(sendableText("\xC3z"), kReplacement + "z");
  EXPECT_EQ(sendableText("\xE2\x82"), kReplacement + kReplacement);
  EXPECT_EQ(sendableText("\xC0\x80"), kReplacement + kReplacement);  // overlong
  EXPECT_EQ(sendableText("\xE0\x80\x80"), kReplacement + kReplacement + kReplacement);
  EXPECT_EQ(sendableText("\xF8\x88\x80\x80\x80").size(), 5 * kReplacement.size());
}

TEST(WireText, ReplacesCodePointsThatMayNotBeSent) {
  EXPECT_EQ(sendableText("\xED\xA0\x80"), kReplacement);      // a surrogate
  EXPECT_EQ(sendableText("\xEF\xBF\xBF"), kReplacement);      // U+FFFF
  EXPECT_EQ(sendableText("\xEF\xB7\x90"), kReplacement);      // U+FDD0
  EXPECT_EQ(sendableText("\xF0\x9F\xBF\xBE"), kReplacement);  // U+1FFFE
  EXPECT_EQ(sendableText("\xF4\x90\x80\x80"), kReplacement);  // beyond U+10FFFF
}

}  // namespace
}  // namespace vantrell::tests
