// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <chrono>

#include <gtest/gtest.h>

#include "foundation/Iso8601.h"

namespace vantrell {
namespace {

TEST(Iso8601, WritesAndReadsKnownDates) {
  const std::pair<std::int64_t, std::string_view> dates[] = {{0, "1970-01-01T00:00:00Z"},
                                                             {-1, "1969-12-31T23:59:59Z"},
                                                             {978307200, "2001-01-01T00:00:00Z"},
                                                             {951782400, "2000-02-29T00:00:00Z"},
                                                             {1709210096, "2024-02-29T12:34:56Z"},
                                                             {253402300799, "9999-12-31T23:59:59Z"},
                                                             {253402300800, "10000-01-01T00:00:00Z"},
                                                             {-62135596800, "0001-01-01T00:00:00Z"},
                                                             {-62167219200, "0000-01-01T00:00:00Z"},
                                                             {-62167219201, "-0001-12-31T23:59:59Z"}};
  for (const auto& [seconds, text] : dates) {
    EXPECT_EQ(iso8601FromDate({seconds, 0}), text);
    EXPECT_EQ(dateFromIso8601(text), (Date{seconds, 0})) << text;
  }
}

TEST(Iso8601, AgreesWithTheStandardCalendar) {
  using namespace std::chrono;
  for (auto day = sys_days(year(-400) / 1 / 1); day < sys_days(year(2500) / 1 / 1); day += days(17)) {
    const year_month_day civil(day);
    const auto text = iso8601FromDate({day.time_since_epoch().count() * std::int64_t{86400}, 0});
    ASSERT_TRUE(text);
    const auto date = text->substr(text->size() - 15, 5);
    char expected[8];
    std::snprintf(expected, sizeof expected, "%02u-%02u", static_cast<unsigned>(civil.month()),
                  static_cast<unsigned>(civil.day()));
    ASSERT_EQ(date, expected) << *text;
    ASSERT_EQ(std::stoi(*text), static_cast<int>(civil.year())) << *text;
    ASSERT_EQ(dateFromIso8601(*text)->seconds, day.time_since_epoch().count() * std::int64_t{86400});
  }
}

TEST(Iso8601, FractionsOfSecondsAreDropped) {
  EXPECT_EQ(iso8601FromDate({-1, 999'999'999}), "1969-12-31T23:59:59Z");
}

TEST(Iso8601, DatesBeyondEightDigitYearsHaveNoForm) {
  EXPECT_EQ(iso8601FromDate({std::numeric_limits<std::int64_t>::max(), 0}), std::nullopt);
  EXPECT_EQ(iso8601FromDate({std::numeric_limits<std::int64_t>::min(), 0}), std::nullopt);
  EXPECT_EQ(iso8601FromDate(*dateFromIso8601("99999999-12-31T23:59:59Z")), "99999999-12-31T23:59:59Z");
  EXPECT_EQ(iso8601FromDate(*dateFromIso8601("-99999999-01-01T00:00:00Z")), "-99999999-01-01T00:00:00Z");
}

TEST(Iso8601, RefusesWhatIsNoDate) {
  for (const std::string_view text : {"",
                                      "Z",
                                      "2024-01-01",
                                      "2024-01-01T00:00:00",
                                      "2024-01-01T00:00:00z",
                                      "2024-01-01 00:00:00Z",
                                      "2024-1-01T00:00:00Z",
                                      "24-01-01T00:00:00Z",
                                      "2024-13-01T00:00:00Z",
                                      "2024-00-01T00:00:00Z",
                                      "2024-01-00T00:00:00Z",
                                      "2024-01-32T00:00:00Z",
                                      "2023-02-29T00:00:00Z",
                                      "1900-02-29T00:00:00Z",
                                      "2024-04-31T00:00:00Z",
                                      "2024-01-01T24:00:00Z",
                                      "2024-01-01T00:60:00Z",
                                      "2024-01-01T00:00:60Z",
                                      "2024-01-01T00:00:00ZZ",
                                      "2024-01-01T00:00:00+00:00",
                                      "+2024-01-01T00:00:00Z",
                                      "2024-01-01T00:00:00.5Z",
                                      "100000000-01-01T00:00:00Z",
                                      "99999999999999999999-01-01T00:00:00Z"}) {
    EXPECT_EQ(dateFromIso8601(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace vantrell
