// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cmath>
#include <cstdlib>
#include <limits>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "foundation/Number.h"

namespace vantrell {
namespace {

constexpr std::int64_t kSmallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::uint64_t kLargestUnsigned = std::numeric_limits<std::uint64_t>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kTwoTo53 = 9007199254740992.0;
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

TEST(NumberTest, RemembersWhatItWasMadeFrom) {
  EXPECT_EQ(Number(true).kind(), Number::Kind::Boolean);
  EXPECT_EQ(Number(1).kind(), Number::Kind::Signed);
  EXPECT_EQ(Number(std::int8_t{1}).kind(), Number::Kind::Signed);
  EXPECT_EQ(Number(1U).kind(), Number::Kind::Unsigned);
  EXPECT_EQ(Number(std::uint8_t{1}).kind(), Number::Kind::Unsigned);
  EXPECT_EQ(Number(1.0).kind(), Number::Kind::Real);
  EXPECT_EQ(Number(1.0F).kind(), Number::Kind::Real);
  EXPECT_EQ(Number().kind(), Number::Kind::Signed);
  EXPECT_EQ(Number().signedValue(), 0);
}

TEST(NumberTest, IsNotMadeFromPointers) {
  EXPECT_FALSE((std::is_constructible_v<Number, const char*>));
  EXPECT_FALSE((std::is_constructible_v<Number, void*>));
  EXPECT_FALSE((std::is_constructible_v<Number, std::nullptr_t>));
}

TEST(NumberTest, IntegersWrapModuloTwoTo64) {
  EXPECT_EQ(Number(-1).unsignedValue(), kLargestUnsigned);
  EXPECT_EQ(Number(kLargestUnsigned).signedValue(), -1);
  EXPECT_EQ(Number(kSmallest).unsignedValue(), std::uint64_t{1} << 63);
  EXPECT_EQ(Number(kLargest).signedValue(), kLargest);
}

TEST(NumberTest, ThirtyTwoBitValuesAreTheLowBits) {
  EXPECT_EQ(Number(std::int64_t{0x1'8000'0002}).int32Value(), -0x7FFF'FFFE);
  EXPECT_EQ(Number(std::int64_t{0x1'8000'0002}).unsigned32Value(), 0x8000'0002U);
  EXPECT_EQ(Number(-1).unsigned32Value(), 0xFFFF'FFFFU);
  EXPECT_EQ(Number(-1.0).unsigned32Value(), 0xFFFF'FFFFU);
}

TEST(NumberTest, RealsAreTruncatedTowardZero) {
  EXPECT_EQ(Number(2.9).signedValue(), 2);
  EXPECT_EQ(Number(-2.9).signedValue(), -2);
  EXPECT_EQ(Number(2.9).unsignedValue(), 2U);
  EXPECT_EQ(Number(-0.9).unsignedValue(), 0U);
  EXPECT_EQ(Number(-2.9).unsignedValue(), kLargestUnsigned - 1);
}

TEST(NumberTest, RealsAreClampedToSixtyFourBits) {
  EXPECT_EQ(Number(kTwoTo63).signedValue(), kLargest);
  EXPECT_EQ(Number(-kTwoTo63).signedValue(), kSmallest);
  EXPECT_EQ(Number(-1e300).signedValue(), kSmallest);
  EXPECT_EQ(Number(kInfinity).signedValue(), kLargest);
  EXPECT_EQ(Number(kTwoTo63).unsignedValue(), std::uint64_t{1} << 63);
  EXPECT_EQ(Number(std::nextafter(kTwoTo64, 0)).unsignedValue(), kLargestUnsigned - 2047);
  EXPECT_EQ(Number(kTwoTo64).unsignedValue(), kLargestUnsigned);
  EXPECT_EQ(Number(kInfinity).unsignedValue(), kLargestUnsigned);
  EXPECT_EQ(Number(-kInfinity).unsignedValue(), std::uint64_t{1} << 63);
}

TEST(NumberTest, NotANumberConvertsToZero) {
  EXPECT_EQ(Number(kNotANumber).signedValue(), 0);
  EXPECT_EQ(Number(kNotANumber).unsignedValue(), 0U);
}

TEST(NumberTest, AnythingButZeroIsTrue) {
  EXPECT_TRUE(Number(-1).boolValue());
  EXPECT_TRUE(Number(256U).boolValue());
  EXPECT_TRUE(Number(0.25).boolValue());
  EXPECT_FALSE(Number(0).boolValue());
  EXPECT_FALSE(Number(0U).boolValue());
  EXPECT_FALSE(Number(-0.0).boolValue());
  EXPECT_FALSE(Number(false).boolValue());
}

TEST(NumberTest, ConvertsToDoublesByValue) {
  EXPECT_EQ(Number(true).doubleValue(), 1.0);
  EXPECT_EQ(Number(-7).doubleValue(), -7.0);
  EXPECT_EQ(Number(kLargestUnsigned).doubleValue(), kTwoTo64);
}

TEST(NumberTest, EqualsByValueWhateverTheKinds) {
  EXPECT_EQ(Number(true), Number(1));
  EXPECT_EQ(Number(false), Number(0.0));
  EXPECT_EQ(Number(1), Number(1U));
  EXPECT_EQ(Number(1.0), Number(1U));
  EXPECT_EQ(Number(-3), Number(-3.0));
  EXPECT_EQ(Number(-0.0), Number(0));
  EXPECT_NE(Number(1), Number(2));
  EXPECT_NE(Number(1), Number(1.5));
}

TEST(NumberTest, NegativeIntegersDifferFromTheUnsignedOnesOfTheSameBits) {
  EXPECT_NE(Number(-1), Number(kLargestUnsigned));
  EXPECT_NE(Number(kLargestUnsigned), Number(-1));
  EXPECT_NE(Number(kSmallest), Number(std::uint64_t{1} << 63));
}

TEST(NumberTest, ComparesLargeIntegersAndRealsExactly) {
  const auto twoTo53 = static_cast<std::int64_t>(kTwoTo53);
  EXPECT_EQ(Number(twoTo53), Number(kTwoTo53));
  EXPECT_NE(Number(twoTo53 + 1), Number(kTwoTo53));
  EXPECT_NE(Number(kTwoTo53), Number(-twoTo53));
  EXPECT_NE(Number(-twoTo53 - 1), Number(-kTwoTo53));
  EXPECT_NE(Number(kLargest), Number(kTwoTo63));
  EXPECT_EQ(Number(kSmallest), Number(-kTwoTo63));
  EXPECT_NE(Number(kSmallest + 1), Number(-kTwoTo63));
  EXPECT_EQ(Number(std::uint64_t{1} << 63), Number(kTwoTo63));
  EXPECT_NE(Number(kLargestUnsigned), Number(kTwoTo64));
  EXPECT_NE(Number(kLargest), Number(kInfinity));
  EXPECT_NE(Number(kSmallest), Number(-kInfinity));
  EXPECT_NE(Number(0), Number(kNotANumber));
}

TEST(NumberTest, EqualityIsTransitive) {
  const std::vector<Number> numbers = {Number(true),
                                       Number(1),
                                       Number(1U),
                                       Number(1.0),
                                       Number(kLargest),
                                       Number(kTwoTo63),
                                       Number(kSmallest),
                                       Number(-kTwoTo63),
                                       Number(kLargestUnsigned),
                                       Number(kTwoTo64),
                                       Number(-1),
                                       Number(kTwoTo53),
                                       Number(static_cast<std::int64_t>(kTwoTo53) + 1)};
  for (const Number& a : numbers) {
    for (const Number& b : numbers) {
      EXPECT_EQ(a == b, b == a);
      for (const Number& c : numbers) {
        if (a == b && b == c) {
          EXPECT_EQ(a, c) << a.description() << ' ' << b.description() << ' ' << c.description();
        }
      }
    }
  }
}

TEST(NumberTest, DescribesItselfInDecimal) {
  EXPECT_EQ(Number(true).description(), "1");
  EXPECT_EQ(Number(false).description(), "0");
  EXPECT_EQ(Number(kSmallest).description(), "-9223372036854775808");
  EXPECT_EQ(Number(kLargestUnsigned).description(), "18446744073709551615");
  EXPECT_EQ(Number(0.1).description(), "0.1");
  EXPECT_EQ(Number(-2.5).description(), "-2.5");
}

TEST(NumberTest, RealDescriptionsReadBackEqual) {
  for (const double real : {1.0 / 3.0, 5e-324, -2.2250738585072014e-308, 1.7976931348623157e308, kTwoTo53 + 2}) {
    EXPECT_EQ(std::strtod(Number(real).description().c_str(), nullptr), real);
  }
}

}  // namespace
}  // namespace vantrell
