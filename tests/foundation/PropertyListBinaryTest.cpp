// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "foundation/PropertyList.h"
#include "tests/foundation/BinaryListMaker.h"
#include "tests/foundation/PropertyListSamples.h"

namespace vantrell {
namespace {

using tests::BinaryListMaker;
using tests::corruption;

Data written(const Value& value) {
  const auto bytes = binaryPropertyListFromValue(value);
  EXPECT_TRUE(bytes);
  return bytes ? *bytes : Data();
}

Value readBack(const Data& bytes) {
  auto list = propertyListFromData(bytes);
  EXPECT_TRUE(list) << corruption(list);
  return list ? list->root : Value();
}

// The list's bytes between header and offset table.
Data objectsOf(const Data& list) {
  std::uint64_t table = 0;
  for (std::size_t i = list.size() - 8; i < list.size(); ++i) table = table << 8 | list[i];
  return {list.begin() + 8, list.begin() + static_cast<std::ptrdiff_t>(table)};
}

unsigned referenceSize(const Data& list) {
  return list[list.size() - 25];
}
unsigned offsetSize(const Data& list) {
  return list[list.size() - 26];
}

TEST(PropertyListBinary, WhatIsWrittenReadsBackEqual) {
  const auto value = tests::sampleValue();
  const auto list = propertyListFromData(written(value));
  ASSERT_TRUE(list) << corruption(list);
  EXPECT_EQ(list->format, PropertyListFormat::Binary);
  EXPECT_EQ(list->root, value);
}

TEST(PropertyListBinary, RandomValuesReadBackEqual) {
  tests::RandomValues random(20240229);
  for (int i = 0; i < 300; ++i) {
    const Value value = random.value(4);
    EXPECT_EQ(readBack(written(value)), value) << i;
  }
}

TEST(PropertyListBinary, ASmallListIsWrittenByteForByte) {
  const Data expected = {'b', 'p', 'l', 'i', 's', 't', '0', '0', 0xD1, 1, 2, 0x51, 'a', 0x09, 8, 11, 13,
                         0,   0,   0,   0,   0,   0,   1,   1,   0,    0, 0, 0,    0,   0,    0, 3,  0,
                         0,   0,   0,   0,   0,   0,   0,   0,   0,    0, 0, 0,    0,   0,    14};
  EXPECT_EQ(written(Dictionary{{"a", true}}), expected);
}

TEST(PropertyListBinary, KindsOfNumbersSurvive) {
  const auto kind = [](const Value& value) { return readBack(written(value)).asNumber()->kind(); };
  EXPECT_EQ(kind(true), Number::Kind::Boolean);
  EXPECT_EQ(kind(1), Number::Kind::Signed);
  EXPECT_EQ(kind(-1), Number::Kind::Signed);
  EXPECT_EQ(kind(std::numeric_limits<std::uint64_t>::max()), Number::Kind::Unsigned);
  EXPECT_EQ(kind(1.0), Number::Kind::Real);
}

TEST(PropertyListBinary, NotANumberAndMinusZeroSurvive) {
  EXPECT_TRUE(std::isnan(readBack(written(std::nan(""))).asNumber()->doubleValue()));
  EXPECT_TRUE(std::signbit(readBack(written(-0.0)).asNumber()->doubleValue()));
}

TEST(PropertyListBinary, IntegersAreWrittenInTheFewestBytes) {
  EXPECT_EQ(objectsOf(written(0)), (Data{0x10, 0}));
  EXPECT_EQ(objectsOf(written(255)), (Data{0x10, 255}));
  EXPECT_EQ(objectsOf(written(256)), (Data{0x11, 1, 0}));
  EXPECT_EQ(objectsOf(written(65536)), (Data{0x12, 0, 1, 0, 0}));
  EXPECT_EQ(objectsOf(written(4294967296)), (Data{0x13, 0, 0, 0, 1, 0, 0, 0, 0}));
  EXPECT_EQ(objectsOf(written(-1)), (Data{0x13, 255, 255, 255, 255, 255, 255, 255, 255}));
  EXPECT_EQ(objectsOf(written(std::uint64_t{1} << 63)),
            (Data{0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(PropertyListBinary, TextIsAsciiOrUtf16) {
  EXPECT_EQ(objectsOf(written("ab")), (Data{0x52, 'a', 'b'}));
  EXPECT_EQ(objectsOf(written("\u00e9")), (Data{0x61, 0, 0xE9}));
  EXPECT_EQ(objectsOf(written("\U0001F600")), (Data{0x62, 0xD8, 0x3D, 0xDE, 0x00}));
  EXPECT_EQ(objectsOf(written(std::string(15, 'x'))).front(), 0x5F);
}

TEST(PropertyListBinary, EqualScalarsAreWrittenOnce) {
  const Date date{5, 0};
  const Data data = {1, 2, 3};
  const Array many(5, Array{"text", 1, true, 1.0, date, data, -7, Dictionary{{"text", "text"}}});
  // text, 1, true, 1.0, date, data, -7; the root, five arrays and five dictionaries.
  const auto list = written(many);
  EXPECT_EQ(list[list.size() - 17], 7 + 11);
  EXPECT_EQ(readBack(list), Value(many));
}

TEST(PropertyListBinary, NumbersOfDifferentKindsAreKeptApart) {
  const Value value = readBack(written(Array{true, 1, 1.0, false, 0, 0.0, -0.0}));
  const auto& array = *value.asArray();
  EXPECT_EQ(array[0].asNumber()->kind(), Number::Kind::Boolean);
  EXPECT_EQ(array[1].asNumber()->kind(), Number::Kind::Signed);
  EXPECT_EQ(array[2].asNumber()->kind(), Number::Kind::Real);
  EXPECT_FALSE(std::signbit(array[5].asNumber()->doubleValue()));
  EXPECT_TRUE(std::signbit(array[6].asNumber()->doubleValue()));
}

TEST(PropertyListBinary, ReferencesAndOffsetsGrowWithTheList) {
  const auto numbers = [](int count) {
    Array array;
    for (int i = 0; i < count; ++i) array.emplace_back(i);
    return written(array);
  };
  EXPECT_EQ(referenceSize(numbers(254)), 1u);  // 255 objects
  EXPECT_EQ(referenceSize(numbers(255)), 2u);
  EXPECT_EQ(referenceSize(numbers(65534)), 2u);
  EXPECT_EQ(referenceSize(numbers(65535)), 4u);
  EXPECT_EQ(offsetSize(written(Data(200, 0))), 1u);
  EXPECT_EQ(offsetSize(written(Data(300, 0))), 2u);
  EXPECT_EQ(offsetSize(written(Data(70'000, 0))), 4u);
  EXPECT_EQ(readBack(numbers(70'000)).asArray()->size(), 70'000u);
}

TEST(PropertyListBinary, WhatSharesMuchIsWrittenSoThatItCanBeRead) {
  // Shared without bound, these would be read from 30 kilobytes as 20 megabytes.
  const Array texts(10'000, std::string(2'000, 'x'));
  EXPECT_EQ(readBack(written(texts)), Value(texts));
  const Array data(10'000, Data(1'000, 7));
  EXPECT_EQ(readBack(written(data)), Value(data));
  const Array uids(100'000, Dictionary{{"CF$UID", 1}});
  EXPECT_EQ(readBack(written(uids)), Value(uids));
  const Array keyed(10'000, Dictionary{{std::string(500, 'k'), 1}});
  EXPECT_EQ(readBack(written(keyed)), Value(keyed));
}

TEST(PropertyListBinary, DatesKeepTheirFractions) {
  for (const Date date :
       {Date{0, 0}, Date{978307200, 500'000'000}, Date{-1, 250'000'000}, Date{1'700'000'000, 125'000'000}}) {
    EXPECT_EQ(readBack(written(date)), Value(date));
  }
}

TEST(PropertyListBinary, DistantDatesAreStableOnceRead) {
  for (const double seconds : {1e15, 1.2345678901234e17, -3.3e18, 4.6e18, 1e300, -1e300}) {
    const auto date = Date::fromSecondsSinceReferenceDate(seconds);
    EXPECT_EQ(readBack(written(date)), Value(date)) << seconds;
  }
  EXPECT_TRUE(propertyListFromData(written(Date{std::numeric_limits<std::int64_t>::min(), 0})));
}

TEST(PropertyListBinary, IllFormedUtf16IsReadWithReplacements) {
  BinaryListMaker maker;
  maker.add({0x63, 0, 'a', 0xD8, 0x3D, 0, 'b'});
  EXPECT_EQ(readBack(maker.make()), Value("a\uFFFDb"));
}

TEST(PropertyListBinary, IllFormedUtf8IsWrittenWithReplacements) {
  EXPECT_EQ(readBack(written(Array{"a\xFFz", "\xC3"})), Value(Array{"a\uFFFDz", "\uFFFD"}));
}

TEST(PropertyListBinary, UidsAreDictionariesAndBack) {
  BinaryListMaker maker;
  maker.add({0x81, 1, 0});
  const Value value = readBack(maker.make());
  EXPECT_EQ(value, Value(Dictionary{{"CF$UID", 256}}));
  EXPECT_EQ(objectsOf(written(value)), (Data{0x81, 1, 0}));
  EXPECT_EQ(objectsOf(written(Dictionary{{"CF$UID", 5}})), (Data{0x80, 5}));
  EXPECT_EQ(objectsOf(written(Dictionary{{"CF$UID", 4294967295}})), (Data{0x83, 255, 255, 255, 255}));
}

TEST(PropertyListBinary, OnlyExactlyThatShapeIsAUid) {
  for (const Value& value :
       {Value(Dictionary{{"CF$UID", -1}}), Value(Dictionary{{"CF$UID", 4294967296}}),
        Value(Dictionary{{"CF$UID", "1"}}), Value(Dictionary{{"CF$UID", true}}), Value(Dictionary{{"CF$UID", 1.0}}),
        Value(Dictionary{{"CF$UID", 1}, {"b", 2}}), Value(Dictionary{{"cf$uid", 1}})}) {
    const auto list = written(value);
    EXPECT_EQ(objectsOf(list).front() & 0xF0, 0xD0);
    EXPECT_EQ(readBack(list), value);
  }
}

TEST(PropertyListBinary, NullIsReadAndNotWritten) {
  BinaryListMaker maker;
  maker.addArray({1});
  maker.add({0x00});
  const Value value = readBack(maker.make());
  EXPECT_TRUE(value.asArray()->front().isNull());
  EXPECT_TRUE(tests::isUnwritable(binaryPropertyListFromValue(value)));
}

TEST(PropertyListBinary, WhatNoListCanHoldIsNotWritten) {
  EXPECT_TRUE(tests::isUnwritable(binaryPropertyListFromValue(Value())));
  EXPECT_TRUE(tests::isUnwritable(binaryPropertyListFromValue(Array{Error::posix(2)})));
  EXPECT_TRUE(tests::isUnwritable(binaryPropertyListFromValue(Dictionary{{"a", Array{1, Value()}}})));
  EXPECT_TRUE(tests::isUnwritable(binaryPropertyListFromValue(tests::nestedArrays(kDeepestPropertyList + 1))));
}

}  // namespace
}  // namespace vantrell
