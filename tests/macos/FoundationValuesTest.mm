// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "host/macos/FoundationValues.h"
#include "host/posix/MessageLimits.h"

namespace vantrell::tests {
namespace {

using host::objectFrom;
using host::valueFrom;
using host::WithoutObject;

Number::Kind kindOf(NSNumber* number) {
  return valueFrom(number)->asNumber()->kind();
}

/// An array in an array, so many levels deep.
NSArray* nested(int levels) {
  NSArray* made = @[];
  for (int level = 1; level < levels; ++level) made = @[ made ];
  return made;
}

TEST(FoundationValues, CarriesValuesThereAndBack) {
  const Value values[] = {"",
                          "text",
                          "\xF0\x9F\x98\x80",
                          std::string("a\0b", 3),
                          "\xEF\xBB\xBFmarked",
                          true,
                          false,
                          0,
                          -1,
                          std::numeric_limits<std::int64_t>::min(),
                          std::numeric_limits<std::int64_t>::max(),
                          std::numeric_limits<std::uint64_t>::max(),
                          0.5,
                          -0.0,
                          1.0,
                          std::numeric_limits<double>::infinity(),
                          Data{},
                          Data{0, 1, 255},
                          Date{-1, 500000000},
                          Array{},
                          Array{Value("a"), Value(1), Value(Array{Value(Data{1})})},
                          Dictionary{},
                          Dictionary{{"", "empty key"}, {"k", Dictionary{{"l", true}}}},
                          Error("domain", -5),
                          Error("domain", 5, {{"key", Error("inner", 1)}})};
  for (const Value& value : values) {
    const auto returned = valueFrom(objectFrom(value));
    ASSERT_TRUE(returned) << value.className();
    EXPECT_EQ(*returned, value) << value.className();
    if (const Number* number = value.asNumber()) EXPECT_EQ(returned->asNumber()->kind(), number->kind());
  }
}

TEST(FoundationValues, TellsTheKindsOfNumbersApart) {
  EXPECT_EQ(kindOf(@YES), Number::Kind::Boolean);
  EXPECT_EQ(kindOf(@NO), Number::Kind::Boolean);
  EXPECT_EQ(kindOf(@1), Number::Kind::Signed);
  EXPECT_EQ(kindOf([NSNumber numberWithChar:1]), Number::Kind::Signed);
  EXPECT_EQ(kindOf([NSNumber numberWithUnsignedLongLong:1ULL << 63]), Number::Kind::Unsigned);
  EXPECT_EQ(kindOf([NSNumber numberWithUnsignedLongLong:1]), Number::Kind::Signed);
  EXPECT_EQ(kindOf(@1.0), Number::Kind::Real);
  EXPECT_EQ(kindOf(@1.0f), Number::Kind::Real);
  EXPECT_TRUE([objectFrom(true) isEqual:@YES]);
  EXPECT_EQ(CFGetTypeID((__bridge CFTypeRef)objectFrom(true)), CFBooleanGetTypeID());
  EXPECT_EQ(CFGetTypeID((__bridge CFTypeRef)objectFrom(1)), CFNumberGetTypeID());
}

TEST(FoundationValues, KeepsEveryMomentThatItCan) {
  EXPECT_EQ(*valueFrom([NSDate dateWithTimeIntervalSinceReferenceDate:0.25]),
            Value(Date{kReferenceDateSince1970, 250000000}));
  EXPECT_EQ(*valueFrom([NSDate dateWithTimeIntervalSinceReferenceDate:NAN]), Value(Date{kReferenceDateSince1970, 0}));
  EXPECT_TRUE(valueFrom(NSDate.distantPast));
  EXPECT_TRUE(valueFrom([NSDate dateWithTimeIntervalSinceReferenceDate:INFINITY]));
}

TEST(FoundationValues, ReplacesWhatIsNoText) {
  EXPECT_TRUE([host::stringFrom("a\xFFz") isEqualToString:@"a\uFFFDz"]);
  const unichar lone[] = {'a', 0xD800, 'z'};
  EXPECT_EQ(host::textFrom([NSString stringWithCharacters:lone length:3]), "a\xEF\xBF\xBDz");
  EXPECT_EQ(host::textFrom(nil), "");
  EXPECT_EQ(host::stringFrom({}).length, 0U);
}

TEST(FoundationValues, HasNoValueForOtherObjects) {
  NSURL* const other = [NSURL URLWithString:@"https://example.com"];
  EXPECT_FALSE(valueFrom(nil));
  EXPECT_FALSE(valueFrom(other));
  EXPECT_FALSE(valueFrom(@[ @1, other ]));
  EXPECT_FALSE(valueFrom(@{@"key" : other}));
  EXPECT_FALSE(valueFrom(@{@1 : @"key that is no text"}));
  EXPECT_EQ(*valueFrom(NSNull.null), Value());
  EXPECT_FALSE(host::arrayFrom(static_cast<NSArray*>(nil)));
  EXPECT_FALSE(host::dictionaryFrom(static_cast<NSDictionary*>(nil)));
}

TEST(FoundationValues, HasNoObjectForThePlaceholder) {
  EXPECT_EQ(objectFrom(Value()), nil);
  const Value list = Array{Value(1), Value(), Value(Dictionary{{"null", Value()}})};
  EXPECT_EQ(objectFrom(list), nil);
  EXPECT_TRUE([objectFrom(list, WithoutObject::Omit) isEqual:(@[ @1, @{} ])]);
  EXPECT_EQ(host::arrayFrom(*list.asArray(), WithoutObject::Refuse), nil);
  EXPECT_EQ(host::dictionaryFrom({{"null", Value()}}, WithoutObject::Refuse), nil);
}

TEST(FoundationValues, BoundsTheNesting) {
  EXPECT_TRUE(valueFrom(nested(host::kMaximumValueDepth)));
  EXPECT_FALSE(valueFrom(nested(host::kMaximumValueDepth + 1)));
  EXPECT_TRUE(host::arrayFrom(nested(host::kMaximumValueDepth + 1))) << "the arguments themselves are no level";
  NSMutableArray* const cycle = [NSMutableArray array];
  [cycle addObject:@[ cycle ]];
  EXPECT_FALSE(valueFrom(cycle));
  [cycle removeAllObjects];

  Value deep = 1;
  for (int level = 0; level < host::kMaximumValueDepth; ++level) deep = Array{deep};
  EXPECT_NE(objectFrom(deep), nil);
  EXPECT_EQ(objectFrom(Array{deep}), nil);
  EXPECT_NE(objectFrom(Array{deep}, WithoutObject::Omit), nil);
}

TEST(FoundationValues, BoundsWhatOneObjectInManyPlacesWouldBecome) {
  NSArray* grown = @[ @1 ];
  for (int level = 0; level < 8; ++level) {
    NSMutableArray* const next = [NSMutableArray array];
    for (int i = 0; i < 100; ++i) [next addObject:grown];
    grown = next;
  }
  EXPECT_FALSE(valueFrom(grown));

  NSData* const megabyte = [NSMutableData dataWithLength:1 << 20];
  NSMutableArray* const gigabytes = [NSMutableArray array];
  for (int i = 0; i < 4000; ++i) [gigabytes addObject:megabyte];
  EXPECT_FALSE(valueFrom(gigabytes));
}

TEST(FoundationValues, LeavesOutOfAnErrorWhatHasNoCounterpart) {
  NSError* const error = [NSError errorWithDomain:@"domain"
                                             code:7
                                         userInfo:@{@"url" : [NSURL URLWithString:@"a:b"], @"text" : @"kept"}];
  EXPECT_EQ(host::errorFrom(error), Error("domain", 7, {{"text", "kept"}}));

  NSError* const made = host::errorFrom(Error("domain", 7, {{"null", Value()}, {"text", "kept"}}));
  EXPECT_TRUE([made.userInfo isEqual:@{@"text" : @"kept"}]);
  EXPECT_EQ(made.code, 7);
  EXPECT_EQ(host::errorFrom(Error::posix(2)).userInfo.count, 0U);
  EXPECT_FALSE(host::errorFrom([NSError errorWithDomain:NSPOSIXErrorDomain code:2 userInfo:nil]).hasUserInfo());
}

}  // namespace
}  // namespace vantrell::tests
