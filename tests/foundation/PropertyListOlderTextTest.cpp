// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "tests/foundation/PropertyListSamples.h"

namespace vantrell {
namespace {

using testing::HasSubstr;
using tests::corruption;
using tests::read;

std::optional<Value> valueOf(std::string_view text) {
  auto list = read(text);
  if (!list || list->format != PropertyListFormat::OlderText) return std::nullopt;
  return list->root;
}

TEST(PropertyListOlderText, ReadsDictionariesArraysTextsAndData) {
  EXPECT_EQ(valueOf(R"({
    key = value;                     // to the end of the line
    "quoted key" = "quoted value";   /* over
                                        lines */
    'single' = 'it is "so"';
    array = ( one, "two", (three, ), {}, () );
    data = <0fbd77 1C2735ae>;
    nested = { a = { b = c; }; };
    number = -1.5e3;
    path = /usr/lib:$HOME/x_y-z.w;
  })"),
            Value(Dictionary{{"key", "value"},
                             {"quoted key", "quoted value"},
                             {"single", "it is \"so\""},
                             {"array", Array{"one", "two", Array{"three"}, Dictionary{}, Array{}}},
                             {"data", Data{0x0f, 0xbd, 0x77, 0x1c, 0x27, 0x35, 0xae}},
                             {"nested", Dictionary{{"a", Dictionary{{"b", "c"}}}}},
                             {"number", "-1.5e3"},
                             {"path", "/usr/lib:$HOME/x_y-z.w"}}));
}

TEST(PropertyListOlderText, AnyValueCanBeTheRoot) {
  EXPECT_EQ(valueOf("hello"), Value("hello"));
  EXPECT_EQ(valueOf(" \"hello there\" // comment"), Value("hello there"));
  EXPECT_EQ(valueOf("(a)"), Value(Array{"a"}));
  EXPECT_EQ(valueOf("<00>"), Value(Data{0}));
  EXPECT_EQ(valueOf("<>"), Value(Data{}));
}

TEST(PropertyListOlderText, AStringsFileIsADictionary) {
  EXPECT_EQ(valueOf("/* Localizable */\n\"Hello\" = \"Hallo\";\nkey = (a, b);\nshort;\n"),
            Value(Dictionary{{"Hello", "Hallo"}, {"key", Array{"a", "b"}}, {"short", "short"}}));
  EXPECT_EQ(valueOf("key;"), Value(Dictionary{{"key", "key"}}));
  EXPECT_EQ(valueOf("a = {b = c;};"), Value(Dictionary{{"a", Dictionary{{"b", "c"}}}}));
}

TEST(PropertyListOlderText, NothingButSpaceIsAnEmptyDictionary) {
  EXPECT_EQ(valueOf(" \n"), Value(Dictionary{}));
  EXPECT_EQ(valueOf("// nothing\n/* at all */"), Value(Dictionary{}));
  EXPECT_EQ(corruption(read("")), "no bytes");
}

TEST(PropertyListOlderText, AKeyAloneStandsForItself) {
  EXPECT_EQ(valueOf("{ a; \"b c\"; d = e; }"), Value(Dictionary{{"a", "a"}, {"b c", "b c"}, {"d", "e"}}));
}

TEST(PropertyListOlderText, TheLastOfEqualKeysCounts) {
  EXPECT_EQ(valueOf("{ a = 1; a = 2; }"), Value(Dictionary{{"a", "2"}}));
}

TEST(PropertyListOlderText, EscapesAreResolved) {
  EXPECT_EQ(valueOf(R"("\a\b\f\n\r\t\v\\\"\'\q")"), Value("\a\b\f\n\r\t\v\\\"'q"));
  EXPECT_EQ(valueOf("\"a\\\nb\""), Value("a\nb"));
  EXPECT_EQ(valueOf(R"("\101\7\0601\12")"), Value("A\a01\n"));
  EXPECT_EQ(valueOf(R"("\U0041\U20ac\Ue9z")"), Value("A\u20AC\u00E9z"));
  EXPECT_EQ(valueOf(R"("\Ud83d\Ude00")"), Value("\U0001F600"));
}

// The upper half of the NeXTSTEP encoding, not of Latin 1.
TEST(PropertyListOlderText, OctalEscapesAreNextstepCharacters) {
  EXPECT_EQ(valueOf(R"("\200\201\240\256\341\361\373\375\376")"),
            Value("\u00A0\u00C0\u00A9\uFB01\u00C6\u00E6\u00DF\u00FF\uFFFD"));
  EXPECT_THAT(corruption(read(R"("\400")")), HasSubstr("an octal escape of more than eight bits"));
}

TEST(PropertyListOlderText, LoneSurrogatesAreReplaced) {
  EXPECT_EQ(valueOf(R"("\Ud83dx")"), Value("\uFFFDx"));
  EXPECT_EQ(valueOf(R"("\Ude00")"), Value("\uFFFD"));
  EXPECT_EQ(valueOf(R"("\Ud83d\U0041")"), Value("\uFFFDA"));
  EXPECT_EQ(valueOf(R"("\Ud83d\Ud83d\Ude00")"), Value("\uFFFD\U0001F600"));
  EXPECT_EQ(valueOf(R"("\Ud83d\n")"), Value("\uFFFD\n"));
}

TEST(PropertyListOlderText, SlashesBeginCommentsOnlyBetweenWords) {
  EXPECT_EQ(valueOf("{ url = http://example.com/*; }"), std::nullopt);
  EXPECT_EQ(valueOf("{ url = http://example.com/a; }"), Value(Dictionary{{"url", "http://example.com/a"}}));
  EXPECT_EQ(valueOf("{ a /**/ = /* = */ b //;\n ; }"), Value(Dictionary{{"a", "b"}}));
}

TEST(PropertyListOlderText, UnicodeIsReadInBothEncodings) {
  EXPECT_EQ(valueOf("{ \"gr\u00fcn\" = \"\U0001F600\"; }"), Value(Dictionary{{"gr\u00fcn", "\U0001F600"}}));
  EXPECT_EQ(valueOf("\xEF\xBB\xBF{ a = b; }"), Value(Dictionary{{"a", "b"}}));
  EXPECT_EQ(valueOf("(a,\u2028b\u2029)"), Value(Array{"a", "b"}));
  using namespace std::string_view_literals;
  EXPECT_EQ(valueOf("\xFF\xFE\"\0\x3D\xD8\x00\xDE\"\0"sv), Value("\U0001F600"));
  EXPECT_EQ(valueOf("\xFE\xFF\0\"\x00\xE9\0\""sv), Value("\u00E9"));
  EXPECT_FALSE(read("\"\xFF\""));
  EXPECT_FALSE(read("\xFE\xFF\0\"\xD8\x3D\0\""sv));
  EXPECT_FALSE(read("\xFE\xFF\0a\0"sv));
}

TEST(PropertyListOlderText, MalformedDataIsRefused) {
  for (const std::string_view text : {"<0>", "<0 0>", "<00", "<0", "<0g>", "<xy>", "< 00", "<00//comment\n>"}) {
    EXPECT_NE(corruption(read(text)), "no error") << text;
  }
  EXPECT_EQ(valueOf("< 00 \n 01\t>"), Value(Data{0, 1}));
}

TEST(PropertyListOlderText, RefusesWhatIsMalformed) {
  const std::pair<std::string_view, std::string_view> texts[] = {
      {"{ a = b }", "';' is missing"},
      {"{ a b; }", "';' is missing"},
      {"{ a = ; }", "a value is missing"},
      {"{ a = ", "a value is missing"},
      {"{ = b; }", "a key or the end of the dictionary is missing"},
      {"{ (a) = b; }", "a key or the end of the dictionary is missing"},
      {"{ a = b;", "a key or the end of the dictionary is missing"},
      {"(a b)", "',' or ')' is missing"},
      {"(a", "',' or ')' is missing"},
      {"(,)", "a value is missing"},
      {"(a,,b)", "a value is missing"},
      {"(", "a value is missing"},
      {"(a}", "',' or ')' is missing"},
      {"{a = b;)", "a key or the end of the dictionary is missing"},
      {"\"abc", "a string without an end"},
      {"'abc\"", "a string without an end"},
      {"\"abc\\", "a string without an end"},
      {"\"\\Uxyz\"", "a Unicode escape without digits"},
      {"{} {}", "something behind the root"},
      {"(a) b", "something behind the root"},
      {"a /* b", "a comment without an end"},
      {"a = b; }", "'}' without '{'"},
      {"a = b", "';' is missing"},
      {"a b", "';' is missing"},
      {"a = b; c", "';' is missing"},
      {"{ a = b; };", "something behind the root"},
      {"@", "a value is missing"},
      {"=", "a value is missing"},
      {"}", "a value is missing"},
  };
  for (const auto& [text, problem] : texts)
    EXPECT_EQ(corruption(read(text)), "line 1: " + std::string(problem)) << text;
  EXPECT_EQ(corruption(read("{\n\na = }")), "line 3: a value is missing");
}

TEST(PropertyListOlderText, ZeroBytesAreNotSpace) {
  using namespace std::string_view_literals;
  EXPECT_FALSE(read("a\0"sv));
  EXPECT_EQ(valueOf("\"a\0b\""sv), Value("a\0b"sv));
}

TEST(PropertyListOlderText, ADepthBombIsRefused) {
  EXPECT_THAT(corruption(read(std::string(200'000, '('))), HasSubstr("nested too deeply"));
  EXPECT_THAT(corruption(read(std::string(200'000, '{'))), HasSubstr("a key or the end of the dictionary is missing"));
  std::string dictionaries;
  for (int i = 0; i < 200'000; ++i) dictionaries += "{a=";
  EXPECT_THAT(corruption(read(dictionaries)), HasSubstr("nested too deeply"));
}

TEST(PropertyListOlderText, LimitsHold) {
  EXPECT_TRUE(read(std::string(512, '(') + std::string(512, ')')));
  EXPECT_FALSE(read(std::string(513, '(') + std::string(513, ')')));
  EXPECT_FALSE(propertyListFromData(bytesOf("((a))"), {.maximumDepth = 1}));
  EXPECT_TRUE(propertyListFromData(bytesOf("(a, b)"), {.maximumObjects = 3}));
  EXPECT_FALSE(propertyListFromData(bytesOf("(a, b)"), {.maximumObjects = 2}));
  EXPECT_FALSE(propertyListFromData(bytesOf("(a, b)"), {.maximumSize = 5}));
}

TEST(PropertyListOlderText, TruncatedAnywhereItIsRefused) {
  const std::string_view whole = "{ a = (\"b\\U00e9\", <0011>, 'c'); /* d */ e; }";
  ASSERT_TRUE(read(whole));
  for (std::size_t size = 0; size < whole.size(); ++size) EXPECT_FALSE(read(whole.substr(0, size))) << size;
}

TEST(PropertyListOlderText, EveryChangedByteGivesAnErrorOrAListThatCanBeWrittenAgain) {
  const std::string_view sample = "{ a = (\"b\\U00e9\\101\", <0011>, 'c'); /* d */ e; }";
  for (std::size_t at = 0; at < sample.size(); ++at) {
    for (int change = 1; change < 256; ++change) {
      std::string changed(sample);
      changed[at] = static_cast<char>(changed[at] ^ change);
      const auto list = read(changed);
      if (!list) {
        EXPECT_NE(corruption(list), "another error");
        continue;
      }
      const auto again = binaryPropertyListFromValue(list->root);
      ASSERT_TRUE(again);
      EXPECT_EQ(propertyListFromData(*again)->root, list->root);
    }
  }
}

}  // namespace
}  // namespace vantrell
