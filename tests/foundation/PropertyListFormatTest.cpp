// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cctype>
#include <cstring>

#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "tests/foundation/PropertyListSamples.h"

namespace vantrell {
namespace {

using tests::read;

PropertyListFormat formatOf(std::string_view text) {
  const auto list = read(text);
  EXPECT_TRUE(list) << text << tests::corruption(list);
  return list ? list->format : PropertyListFormat::Binary;
}

TEST(PropertyListFormat, XmlIsToldByItsFirstWord) {
  for (const std::string_view text :
       {"<?xml version=\"1.0\"?><plist><true/></plist>", "<!DOCTYPE plist><plist><true/></plist>",
        "<plist><true/></plist>", "<plist version=\"1.0\"><true/></plist>", "<!-- comment --><plist><true/></plist>",
        " \r\n\t<plist><true/></plist>", "\n<?xml version=\"1.0\"?><plist><true/></plist>",
        "\xEF\xBB\xBF<plist><true/></plist>", "\xEF\xBB\xBF\n<?xml version=\"1.0\"?><plist><true/></plist>"}) {
    EXPECT_EQ(formatOf(text), PropertyListFormat::Xml);
  }
}

TEST(PropertyListFormat, EverythingElseIsOlderText) {
  for (const std::string_view text : {"<00>", " <ab cd>", "{}", "plist", "xml", "\"<plist>\"", "bplis"}) {
    EXPECT_EQ(formatOf(text), PropertyListFormat::OlderText);
  }
}

TEST(PropertyListFormat, WhatBeginsLikeABinaryListIsOne) {
  EXPECT_EQ(tests::corruption(read("bplist = older;")), "header or trailer malformed");
  EXPECT_EQ(formatOf(textOf(*binaryPropertyListFromValue(1))), PropertyListFormat::Binary);
}

TEST(PropertyListFormat, TheSizeIsLimitedInAllFormats) {
  for (const std::string_view text : {"<plist><true/></plist>", "( a )", "bplist00"}) {
    EXPECT_EQ(tests::corruption(propertyListFromData(bytesOf(text), {.maximumSize = text.size() - 1})),
              "larger than allowed");
  }
}

TEST(PropertyListFormat, ShortestInputsAreRefusedOrTexts) {
  EXPECT_FALSE(read(""));
  for (int byte = 0; byte < 256; ++byte) {
    const auto input = static_cast<std::uint8_t>(byte);
    const auto list = propertyListFromData(DataView(&input, 1));
    const bool isWord = std::isalnum(byte) || (byte != 0 && std::strchr("_$/:.-", byte) != nullptr);
    const bool isSpace = byte == ' ' || (byte >= 9 && byte <= 13);
    EXPECT_EQ(list.has_value(), isWord || isSpace) << byte;
  }
}

}  // namespace
}  // namespace vantrell
