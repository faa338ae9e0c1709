// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "tests/foundation/PropertyListSamples.h"

namespace vantrell {
namespace {

using tests::corruption;

std::string written(const Value& value) {
  const auto bytes = xmlPropertyListFromValue(value);
  return bytes ? std::string(textOf(*bytes)) : "not written";
}

// What stands between <plist> and </plist>.
std::string body(const Value& value) {
  const auto text = written(value);
  const auto start = text.find("<plist version=\"1.0\">\n");
  const auto end = text.rfind("</plist>\n");
  if (start == text.npos || end == text.npos) return text;
  return text.substr(start + 22, end - start - 22);
}

TEST(PropertyListXmlWriter, WritesAWholeDocument) {
  EXPECT_EQ(written(Dictionary{{"b", Array{1, "two", true, Array{}, Dictionary{}}},
                               {"a", Dictionary{{"date", Date{1709210096, 0}}, {"real", 0.5}}},
                               {"c", Data{1, 2, 3}}}),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n"
            "<dict>\n"
            "\t<key>a</key>\n"
            "\t<dict>\n"
            "\t\t<key>date</key>\n"
            "\t\t<date>2024-02-29T12:34:56Z</date>\n"
            "\t\t<key>real</key>\n"
            "\t\t<real>0.5</real>\n"
            "\t</dict>\n"
            "\t<key>b</key>\n"
            "\t<array>\n"
            "\t\t<integer>1</integer>\n"
            "\t\t<string>two</string>\n"
            "\t\t<true/>\n"
            "\t\t<array/>\n"
            "\t\t<dict/>\n"
            "\t</array>\n"
            "\t<key>c</key>\n"
            "\t<data>\n"
            "\tAQID\n"
            "\t</data>\n"
            "</dict>\n"
            "</plist>\n");
}

TEST(PropertyListXmlWriter, WhatIsWrittenReadsBackEqual) {
  const auto value = tests::sampleValue();
  const auto list = tests::read(written(value));
  ASSERT_TRUE(list) << corruption(list);
  EXPECT_EQ(list->format, PropertyListFormat::Xml);
  EXPECT_EQ(list->root, value);
}

TEST(PropertyListXmlWriter, RandomValuesReadBackEqual) {
  tests::RandomValues random(4711);
  for (int i = 0; i < 300; ++i) {
    const Value value = random.value(4);
    const auto list = tests::read(written(value));
    ASSERT_TRUE(list) << i << corruption(list);
    EXPECT_EQ(list->root, value) << i;
  }
}

TEST(PropertyListXmlWriter, MarkupAndLineEndsAreEscaped) {
  EXPECT_EQ(body("a<b>&\"'\r\n\t]]>"), "<string>a&lt;b&gt;&amp;\"'&#13;\n\t]]&gt;</string>\n");
  EXPECT_EQ(body(Dictionary{{"<k>", true}}), "<dict>\n\t<key>&lt;k&gt;</key>\n\t<true/>\n</dict>\n");
}

TEST(PropertyListXmlWriter, CharactersThatXmlCannotWriteAreAnError) {
  for (const std::string_view text :
       {std::string_view("\0", 1), std::string_view("a\x01"), std::string_view("\x0B"), std::string_view("\x1F"),
        std::string_view("\uFFFE"), std::string_view("\uFFFF")}) {
    EXPECT_TRUE(tests::isUnwritable(xmlPropertyListFromValue(text))) << testing::PrintToString(text);
    EXPECT_TRUE(tests::isUnwritable(xmlPropertyListFromValue(Dictionary{{std::string(text), 1}})));
  }
  EXPECT_EQ(tests::read(written("\x7F \u0085 \uFFFD \U0010FFFF"))->root, Value("\x7F \u0085 \uFFFD \U0010FFFF"));
}

TEST(PropertyListXmlWriter, IllFormedUtf8IsWrittenWithReplacements) {
  EXPECT_EQ(body("a\xFFz"), "<string>a\uFFFDz</string>\n");
}

TEST(PropertyListXmlWriter, NumbersAreWrittenByKind) {
  EXPECT_EQ(body(Array{-1, std::numeric_limits<std::uint64_t>::max(), 1.0, 0.1, false}),
            "<array>\n\t<integer>-1</integer>\n\t<integer>18446744073709551615</integer>\n\t<real>1</real>\n"
            "\t<real>0.1</real>\n\t<false/>\n</array>\n");
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(body(Array{std::nan(""), kInfinity, -kInfinity}),
            "<array>\n\t<real>nan</real>\n\t<real>+infinity</real>\n\t<real>-infinity</real>\n</array>\n");
}

TEST(PropertyListXmlWriter, DataIsBrokenIntoLinesOfUpTo76Columns) {
  EXPECT_EQ(body(Data(60, 0)), "<data>\n" + std::string(76, 'A') + "\nAAAA\n</data>\n");
  EXPECT_EQ(body(Array{Data(60, 0)}),
            "<array>\n\t<data>\n\t" + std::string(68, 'A') + "\n\t" + std::string(12, 'A') + "\n\t</data>\n</array>\n");
  EXPECT_EQ(body(Data{}), "<data>\n</data>\n");
  Value deep = Data(30, 0);
  for (int i = 0; i < 20; ++i) deep = Array{deep};
  EXPECT_NE(body(deep).find("\n" + std::string(20, '\t') + std::string(12, 'A') + "\n"), std::string::npos);
}

TEST(PropertyListXmlWriter, FractionsOfSecondsAreDropped) {
  EXPECT_EQ(body(Date{-1, 500'000'000}), "<date>1969-12-31T23:59:59Z</date>\n");
}

TEST(PropertyListXmlWriter, WhatNoListCanHoldIsNotWritten) {
  EXPECT_TRUE(tests::isUnwritable(xmlPropertyListFromValue(Value())));
  EXPECT_TRUE(tests::isUnwritable(xmlPropertyListFromValue(Array{Error::posix(2)})));
  EXPECT_TRUE(tests::isUnwritable(xmlPropertyListFromValue(Dictionary{{"a", Array{1, Value()}}})));
  EXPECT_TRUE(tests::isUnwritable(xmlPropertyListFromValue(Date{std::numeric_limits<std::int64_t>::max(), 0})));
  EXPECT_TRUE(xmlPropertyListFromValue(tests::nestedArrays(kDeepestPropertyList)));
  EXPECT_TRUE(tests::isUnwritable(xmlPropertyListFromValue(tests::nestedArrays(kDeepestPropertyList + 1))));
}

}  // namespace
}  // namespace vantrell
