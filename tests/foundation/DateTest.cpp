// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cmath>
#include <ctime>
#include <limits>

#include <gtest/gtest.h>

#include "foundation/Date.h"

namespace vantrell {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(DateTest, ReferenceDateIsTheFirstDayOf2001) {
  std::tm parts = {};
  parts.tm_year = 101;
  parts.tm_mday = 1;
  EXPECT_EQ(timegm(&parts), kReferenceDateSince1970);
  EXPECT_EQ(Date::fromSecondsSinceReferenceDate(0), (Date{kReferenceDateSince1970, 0}));
}

TEST(DateTest, KeepsFractionsAsNanosecondsAfterTheSecond) {
  EXPECT_EQ(Date::fromSecondsSinceReferenceDate(1.25), (Date{kReferenceDateSince1970 + 1, 250'000'000}));
  EXPECT_EQ(Date::fromSecondsSinceReferenceDate(-1.25), (Date{kReferenceDateSince1970 - 2, 750'000'000}));
  EXPECT_EQ(Date::fromSecondsSinceReferenceDate(-978307200.5), (Date{-1, 500'000'000}));
}

TEST(DateTest, RoundingUpToAFullSecondCarries) {
  EXPECT_EQ(Date::fromSecondsSinceReferenceDate(0.9999999999), (Date{kReferenceDateSince1970 + 1, 0}));
  EXPECT_EQ(Date::fromSecondsSinceReferenceDate(-1e-20), (Date{kReferenceDateSince1970, 0}));
}

TEST(DateTest, ClampsWhatNoSecondCountHolds) {
  const Date late = Date::fromSecondsSinceReferenceDate(kInfinity);
  const Date early = Date::fromSecondsSinceReferenceDate(-kInfinity);
  EXPECT_EQ(late, Date::fromSecondsSinceReferenceDate(1e300));
  EXPECT_EQ(early, Date::fromSecondsSinceReferenceDate(-1e300));
  EXPECT_GT(late.seconds, std::int64_t{1} << 61);
  EXPECT_LT(early.seconds, -(std::int64_t{1} << 61));
  EXPECT_LT(early, late);
}

TEST(DateTest, NotANumberBecomesTheReferenceDate) {
  EXPECT_EQ(Date::fromSecondsSinceReferenceDate(std::nan("")), (Date{kReferenceDateSince1970, 0}));
}

TEST(DateTest, SecondsSinceReferenceDateReadBackEqual) {
  for (const double seconds : {0.0, 0.5, -0.5, 1.0 / 3.0, 725846400.0, 725846400.123456, -978307200.0, 1e12, -3e10}) {
    EXPECT_NEAR(Date::fromSecondsSinceReferenceDate(seconds).secondsSinceReferenceDate(), seconds, 5e-10);
  }
  // Present-day moments are coarser than nanoseconds as doubles and survive exactly.
  EXPECT_EQ(Date::fromSecondsSinceReferenceDate(725846400.123456).secondsSinceReferenceDate(), 725846400.123456);
}

TEST(DateTest, IntervalsHaveASign) {
  const Date earlier = {100, 750'000'000};
  const Date later = {102, 250'000'000};
  EXPECT_DOUBLE_EQ(later.secondsSince(earlier), 1.5);
  EXPECT_DOUBLE_EQ(earlier.secondsSince(later), -1.5);
  EXPECT_EQ(later.secondsSince(later), 0.0);
}

TEST(DateTest, IntervalsOfTheExtremesDoNotOverflow) {
  const Date first = {std::numeric_limits<std::int64_t>::min(), 0};
  const Date last = {std::numeric_limits<std::int64_t>::max(), 999'999'999};
  EXPECT_DOUBLE_EQ(last.secondsSince(first), std::ldexp(1.0, 64));
  EXPECT_DOUBLE_EQ(first.secondsSinceReferenceDate(), -std::ldexp(1.0, 63) - 978307200.0);
}

TEST(DateTest, OrdersBySecondsThenNanoseconds) {
  EXPECT_LT((Date{1, 999'999'999}), (Date{2, 0}));
  EXPECT_LT((Date{-2, 500}), (Date{-1, 0}));
  EXPECT_LT((Date{1, 1}), (Date{1, 2}));
}

TEST(DateTest, NowIsTheWallClock) {
  const std::time_t before = std::time(nullptr);
  const Date now = Date::now();
  const std::time_t after = std::time(nullptr);
  // time() may read a clock that lags by a tick.
  EXPECT_GE(now.seconds, before);
  EXPECT_LE(now.seconds, after + 1);
  EXPECT_LT(now.nanoseconds, 1'000'000'000U);
}

}  // namespace
}  // namespace vantrell
