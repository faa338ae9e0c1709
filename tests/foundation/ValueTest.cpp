// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>
#include <string_view>
#include <type_traits>

#include <gtest/gtest.h>

#include "foundation/Value.h"

namespace vantrell {
namespace {

TEST(ValueTest, BeginsAsNull) {
  EXPECT_TRUE(Value().isNull());
  EXPECT_EQ(Value(), Value(Null()));
}

TEST(ValueTest, NamesItsClassAsRefusalsReportIt) {
  EXPECT_EQ(Value().className(), "NSNull");
  EXPECT_EQ(Value("text").className(), "NSString");
  EXPECT_EQ(Value(1).className(), "NSNumber");
  EXPECT_EQ(Value(true).className(), "NSNumber");
  EXPECT_EQ(Value(Data{1}).className(), "NSData");
  EXPECT_EQ(Value(Date{}).className(), "NSDate");
  EXPECT_EQ(Value(Array{}).className(), "NSArray");
  EXPECT_EQ(Value(Dictionary{}).className(), "NSDictionary");
  EXPECT_EQ(Value(Error::posix(2)).className(), "NSError");
}

TEST(ValueTest, EveryTextTypeBecomesAString) {
  EXPECT_EQ(*Value("text").asString(), "text");
  EXPECT_EQ(*Value(std::string("text")).asString(), "text");
  EXPECT_EQ(*Value(std::string_view("text")).asString(), "text");
  EXPECT_EQ(Value(std::string("a\0b", 3)).asString()->size(), 3U);
}

TEST(ValueTest, NumbersKeepTheirKind) {
  EXPECT_EQ(Value(true).asNumber()->kind(), Number::Kind::Boolean);
  EXPECT_EQ(Value(-1).asNumber()->kind(), Number::Kind::Signed);
  EXPECT_EQ(Value(1ULL).asNumber()->kind(), Number::Kind::Unsigned);
  EXPECT_EQ(Value(0.5).asNumber()->kind(), Number::Kind::Real);
}

TEST(ValueTest, PointersDoNotBecomeNumbers) {
  EXPECT_FALSE((std::is_constructible_v<Value, const int*>));
  EXPECT_FALSE((std::is_constructible_v<Value, const Value*>));
}

TEST(ValueTest, AnswersOnlyForItsOwnKind) {
  const Value value("1");
  EXPECT_NE(value.asString(), nullptr);
  EXPECT_EQ(value.asNumber(), nullptr);
  EXPECT_EQ(value.asData(), nullptr);
  EXPECT_EQ(value.asDate(), nullptr);
  EXPECT_EQ(value.asArray(), nullptr);
  EXPECT_EQ(value.asDictionary(), nullptr);
  EXPECT_EQ(value.asError(), nullptr);
  EXPECT_FALSE(value.isNull());
}

TEST(ValueTest, EqualsByKindAndContents) {
  EXPECT_EQ(Value(1), Value(true));
  EXPECT_EQ(Value(1), Value(1.0));
  EXPECT_NE(Value("1"), Value(1));
  EXPECT_NE(Value(""), Value());
  EXPECT_NE(Value(Data{}), Value(""));
  EXPECT_EQ(Value(Data{1, 2}), Value(Data{1, 2}));
  EXPECT_NE(Value(Date{1, 0}), Value(Date{1, 1}));
  EXPECT_EQ(Value(Error::posix(2)), Value(Error::posix(2)));
  EXPECT_EQ(Value(Array{1, "two", Array{3}}), Value(Array{1U, "two", Array{3.0}}));
  EXPECT_NE(Value(Array{1, 2}), Value(Array{2, 1}));
}

TEST(ValueTest, CopiesAreDeep) {
  Value original = Array{Dictionary{{"a", 1}}};
  Value copy = original;
  copy.asArray()->at(0).asDictionary()->set("a", 2);
  EXPECT_EQ(original, Value(Array{Dictionary{{"a", 1}}}));
  EXPECT_NE(original, copy);
}

TEST(ValueTest, MayBeSetToAPartOfItself) {
  Value value = Array{Array{1, 2}, 3};
  value = Value(value.asArray()->at(0));
  EXPECT_EQ(value, Value(Array{1, 2}));
}

}  // namespace
}  // namespace vantrell
