// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "foundation/Uuid.h"

namespace vantrell {
namespace {

constexpr Uuid::Bytes kBytes = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                                0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};

TEST(UuidTest, IsWrittenInUpperCaseCanonicalForm) {
  EXPECT_EQ(Uuid(kBytes).string(), "01234567-89AB-CDEF-FEDC-BA9876543210");
  EXPECT_EQ(Uuid().string(), "00000000-0000-0000-0000-000000000000");
}

TEST(UuidTest, IsMadeFromExactlySixteenBytes) {
  const Data bytes(kBytes.begin(), kBytes.end());
  const auto uuid = Uuid::fromBytes(bytes);
  ASSERT_TRUE(uuid.has_value());
  EXPECT_EQ(uuid->bytes(), kBytes);
  EXPECT_FALSE(Uuid::fromBytes(DataView(bytes).first(15)).has_value());
  EXPECT_FALSE(Uuid::fromBytes(Data(17)).has_value());
  EXPECT_FALSE(Uuid::fromBytes({}).has_value());
}

TEST(UuidTest, AcceptsEveryBitPattern) {
  EXPECT_EQ(Uuid::fromBytes(Data(16, 0xFF))->string(), "FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFF");
}

TEST(UuidTest, RandomOnesBearVersionFourAndTheVariant) {
  Uuid::Bytes ones;
  ones.fill(0xFF);
  EXPECT_EQ(Uuid::fromRandomBytes(ones).string(), "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
  EXPECT_EQ(Uuid::fromRandomBytes({}).string(), "00000000-0000-4000-8000-000000000000");
}

TEST(UuidTest, OrdersByItsBytes) {
  Uuid::Bytes greater = kBytes;
  greater[15] = 0x11;
  EXPECT_EQ(Uuid(kBytes), Uuid(kBytes));
  EXPECT_LT(Uuid(kBytes), Uuid(greater));
}

}  // namespace
}  // namespace vantrell
