// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <limits>

#include <gtest/gtest.h>

#include "client/DateText.h"

namespace vantrell {
namespace {

TEST(DateText, ShowsAFractionOnlyWhenThereIsOne) {
  EXPECT_EQ(textOfDate({0, 0}), "1970-01-01T00:00:00Z");
  EXPECT_EQ(textOfDate({1'772'366'400, 0}), "2026-03-01T12:00:00Z");
  EXPECT_EQ(textOfDate({1'772'366'400, 250'000'000}), "2026-03-01T12:00:00.25Z");
  EXPECT_EQ(textOfDate({1'772'366'400, 1}), "2026-03-01T12:00:00.000000001Z");
  EXPECT_EQ(textOfDate({1'772'366'400, 999'999'999}), "2026-03-01T12:00:00.999999999Z");
}

TEST(DateText, CountsBackBefore1970) {
  EXPECT_EQ(textOfDate({-1, 500'000'000}), "1969-12-31T23:59:59.5Z");
}

TEST(DateText, FallsBackToSecondsForDatesThatNobodyMeans) {
  EXPECT_EQ(textOfDate({std::numeric_limits<std::int64_t>::max(), 5}), "@9223372036854775807");
  EXPECT_EQ(textOfDate({std::numeric_limits<std::int64_t>::min(), 0}), "@-9223372036854775808");
}

}  // namespace
}  // namespace vantrell
