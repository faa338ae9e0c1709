// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "foundation/PosixCodes.h"
#include "foundation/PropertyList.h"
#include "system/ValueText.h"

namespace vantrell {
namespace {

using enum CoreFoundationType;

std::optional<Value> convert(CoreFoundationType type, std::string_view text) {
  return copyCoreFoundationValueWithType(type, text);
}

TEST(ValueText, BooleansAreExactlyTheTwoWords) {
  for (const bool expected : {true, false}) {
    const auto value = convert(Boolean, expected ? "true" : "false");
    ASSERT_TRUE(value);
    ASSERT_TRUE(value->asNumber());
    EXPECT_EQ(value->asNumber()->kind(), Number::Kind::Boolean);
    EXPECT_EQ(value->asNumber()->boolValue(), expected);
  }
  for (const auto* text : {"TRUE", "True", "False", "1", "0", "yes", "", " true", "true ", "truefalse", "%01"})
    EXPECT_FALSE(convert(Boolean, text)) << text;
}

TEST(ValueText, NumbersAreTheLeadingIntegerOrZero) {
  const std::pair<const char*, std::int64_t> kCases[] = {
      {"42", 42},
      {"-42", -42},
      {"+42", 42},
      {"  \t\n42", 42},
      {"42abc", 42},
      {"42.9", 42},
      {"007", 7},
      {"0x10", 0},
      {"", 0},
      {"abc", 0},
      {"-", 0},
      {"+", 0},
      {"+-5", 0},
      {"-+5", 0},
      {"- 5", 0},
      {"%41", 0},
      {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
      {"-9223372036854775808", std::numeric_limits<std::int64_t>::min()},
      {"9223372036854775808", std::numeric_limits<std::int64_t>::max()},
      {"-9223372036854775809", std::numeric_limits<std::int64_t>::min()},
      {"99999999999999999999999999999", std::numeric_limits<std::int64_t>::max()},
  };
  for (const auto& [text, expected] : kCases) {
    const auto value = convert(CoreFoundationType::Number, text);
    ASSERT_TRUE(value && value->asNumber()) << text;
    EXPECT_EQ(value->asNumber()->kind(), Number::Kind::Signed) << text;
    EXPECT_EQ(value->asNumber()->signedValue(), expected) << text;
  }
}

TEST(ValueText, StringsAreTakenAsTheyAre) {
  for (const std::string text : {"", "text", "%41%42", "true", "42", " \n", "\xC3\xA4\xF0\x9F\x98\x80", "\xFF\xFE"})
    EXPECT_EQ(convert(String, text), Value(text)) << text;
}

TEST(ValueText, DataIsARunOfGroups) {
  const std::pair<const char*, vantrell::Data> kCases[] = {
      {"%00%1f%FF", {0x00, 0x1F, 0xFF}},
      {"%41%42", {0x41, 0x42}},
      {"%aB", {0xAB}},
      {"%41 %42", {0x41, 0x42}},
      {"%41 \t\r\n%42", {0x41, 0x42}},
      {" %41", {0x41}},
      {"%41   ", {0x41}},
      {"%41\xE2\x80\x83%42", {0x41, 0x42}},
      {"%0041", {0x41}},
      {"%00000000000000000000000000000000ff", {0xFF}},
  };
  for (const auto& [text, expected] : kCases)
    EXPECT_EQ(convert(CoreFoundationType::Data, text), Value(expected)) << text;
}

TEST(ValueText, DataHasAtMostAThirdOfTheTextsLengthInBytes) {
  const std::pair<const char*, vantrell::Data> kCases[] = {
      {"%1%2", {0x01}},                                            // 4 / 3
      {"%1%2%3", {0x01, 0x02}},                                    // 6 / 3
      {"%1%2%3%4%5", {1, 2, 3}},                                   // 10 / 3
      {"%41x", {0x41}},                                            // what follows is not looked at
      {"%41%", {0x41}},          {"%41\xC3\xA4\xC3\xA4", {0x41}},  // two units, four bytes
  };
  for (const auto& [text, expected] : kCases)
    EXPECT_EQ(convert(CoreFoundationType::Data, text), Value(expected)) << text;
  EXPECT_FALSE(convert(CoreFoundationType::Data, "%41\xF0\x9F\x98\x80x"));  // three units: a second byte is looked for
}

TEST(ValueText, WhatIsNoRunOfGroupsIsNoData) {
  for (const auto* text : {"",
                           "%",
                           "%4",
                           "ab",
                           "abc",
                           "4142",
                           "%41xyz",
                           "%%41",
                           "%zz",
                           "% 41",
                           "%100",
                           "%1000%41",
                           "%fffffffffffffffffff",
                           "%41%0x42xx",
                           "   ",
                           "      ",
                           "%41,%42",
                           "%41%\n42",
                           "%41%-2",
                           "\xFF\xFF\xFF"})
    EXPECT_FALSE(convert(CoreFoundationType::Data, text)) << text;
}

TEST(ValueText, OtherTypesHaveNoText) {
  for (const auto* text : {"", "true", "42", "%41"}) EXPECT_FALSE(convert(Other, text));
}

TEST(ValueText, LongTextsTakeTimeInProportion) {
  constexpr std::size_t kGroups = 1'000'000;
  std::string text;
  for (std::size_t i = 0; i < kGroups; ++i) text += "%41";
  EXPECT_EQ(convert(CoreFoundationType::Data, text), Value(vantrell::Data(kGroups, 0x41)));
  EXPECT_FALSE(convert(CoreFoundationType::Data, text + "xxx"));
  EXPECT_EQ(convert(CoreFoundationType::Data, "%" + std::string(3 * kGroups, '0')), Value(vantrell::Data{0}));
  EXPECT_EQ(convert(CoreFoundationType::Number, std::string(3 * kGroups, '9')),
            Value(std::numeric_limits<std::int64_t>::max()));
  EXPECT_FALSE(convert(CoreFoundationType::Data, std::string(3 * kGroups, ' ')));
}

TEST(ValueText, TypesAreThoseOfTheValues) {
  EXPECT_EQ(coreFoundationTypeOf(true), Boolean);
  EXPECT_EQ(coreFoundationTypeOf(1), CoreFoundationType::Number);
  EXPECT_EQ(coreFoundationTypeOf(1u), CoreFoundationType::Number);
  EXPECT_EQ(coreFoundationTypeOf(1.0), CoreFoundationType::Number);
  EXPECT_EQ(coreFoundationTypeOf("text"), String);
  EXPECT_EQ(coreFoundationTypeOf(vantrell::Data{1}), CoreFoundationType::Data);
  for (const Value& value : {Value(), Value(Date()), Value(Array()), Value(Dictionary())})
    EXPECT_EQ(coreFoundationTypeOf(value), Other);
}

TEST(PropertyListText, IsReadInEachForm) {
  const auto read = [](std::string_view text) { return propertyListValueFromText(text).value(); };
  EXPECT_EQ(read("<plist version=\"1.0\"><array><true/><integer>7</integer></array></plist>"), Value(Array{true, 7}));
  EXPECT_EQ(read("{ key = (one, \"two\"); }"), Value(Dictionary{{"key", Array{"one", "two"}}}));
  EXPECT_EQ(read("word"), Value("word"));
  // Of the binary form, lists with nothing but a short text in them are texts as a whole.
  const auto binary = binaryPropertyListFromValue("a").value();
  EXPECT_EQ(read(textOf(binary)), Value("a"));
}

TEST(PropertyListText, OfNothingIsNoValue) {
  const auto value = propertyListValueFromText("");
  ASSERT_TRUE(value);
  EXPECT_FALSE(*value);
}

TEST(PropertyListText, ThatIsNoneIsAnErrorWithTheReadersUnderneath) {
  std::string deep;
  for (int i = 0; i < 100'000; ++i) deep += '(';
  for (const auto& text : {std::string("{"), std::string("<plist>"), std::string("bplist00"), deep,
                           std::string("\xFF\xFF"), std::string("<plist><array>") + deep}) {
    const auto value = propertyListValueFromText(text);
    ASSERT_FALSE(value) << text.substr(0, 40);
    EXPECT_TRUE(value.error().isPosix(posix::kInvalidArgument));
    ASSERT_EQ(value.error().userInfo().size(), 1u);
    const auto* underlying = value.error().userInfo().find("NSUnderlyingError");
    ASSERT_TRUE(underlying && underlying->asError());
    EXPECT_EQ(underlying->asError()->domain(), kCocoaErrorDomain);
    EXPECT_EQ(underlying->asError()->code(), kCocoaPropertyListReadCorrupt);
  }
}

}  // namespace
}  // namespace vantrell
