// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Iso8601.h"

#include <cstdint>

#include <fmt/format.h>

namespace vantrell {

namespace {

constexpr std::int64_t kLargestYear = 99'999'999;
constexpr std::int64_t kSecondsPerDay = 86'400;
constexpr std::int64_t kDaysPerEra = 146'097;  // 400 years, after which the calendar repeats
// Days from 0000-03-01, where an era begins, to 1970-01-01.
constexpr std::int64_t kEpochInDays = 719'468;

struct CivilDay {
  std::int64_t year;
  unsigned month;  // 1 to 12
  unsigned day;    // 1 to 31
};

constexpr std::int64_t floorDivide(std::int64_t dividend, std::int64_t divisor) noexcept {
  return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

// Both count years from March on, so that the leap day is a year's last and months have lengths in a pattern of five.
constexpr std::int64_t daysSince1970(const CivilDay& civil) noexcept {
  const std::int64_t year = civil.year - (civil.month <= 2 ? 1 : 0);
  const std::int64_t era = floorDivide(year, 400);
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t month = (civil.month + 9) % 12;  // March is 0
  const std::int64_t dayOfYear = (153 * month + 2) / 5 + civil.day - 1;
  return era * kDaysPerEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - kEpochInDays;
}

constexpr CivilDay civilDay(std::int64_t daysSince1970) noexcept {
  const std::int64_t days = daysSince1970 + kEpochInDays;
  const std::int64_t era = floorDivide(days, kDaysPerEra);
  const std::int64_t dayOfEra = days - era * kDaysPerEra;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36'524 - dayOfEra / (kDaysPerEra - 1)) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t month = (5 * dayOfYear + 2) / 153;
  return {.year = yearOfEra + era * 400 + (month >= 10 ? 1 : 0),
          .month = static_cast<unsigned>((month + 2) % 12 + 1),
          .day = static_cast<unsigned>(dayOfYear - (153 * month + 2) / 5 + 1)};
}

static_assert(daysSince1970({1970, 1, 1}) == 0);
static_assert(daysSince1970({2001, 1, 1}) == kReferenceDateSince1970 / kSecondsPerDay);

bool takeNumber(std::string_view& text, std::size_t fewest, std::size_t most, std::int64_t& number) {
  std::size_t digits = 0;
  number = 0;
  while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9') {
    if (digits == most) return false;
    number = number * 10 + (text[digits++] - '0');
  }
  text.remove_prefix(digits);
  return digits >= fewest;
}

bool takeSign(std::string_view& text, char sign) {
  if (!text.starts_with(sign)) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

std::optional<std::string> iso8601FromDate(const Date& date) {
  const std::int64_t days = floorDivide(date.seconds, kSecondsPerDay);
  const std::int64_t second = (date.seconds % kSecondsPerDay + kSecondsPerDay) % kSecondsPerDay;
  const auto [year, month, day] = civilDay(days);
  if (year > kLargestYear || year < -kLargestYear) return std::nullopt;
  return fmt::format("{}{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", year < 0 ? "-" : "", year < 0 ? -year : year, month, day,
                     second / 3600, second / 60 % 60, second % 60);
}

std::optional<Date> dateFromIso8601(std::string_view text) {
  const bool negative = takeSign(text, '-');
  std::int64_t year, month, day, hour, minute, second;
  if (!takeNumber(text, 4, 8, year) || !takeSign(text, '-') || !takeNumber(text, 2, 2, month) || !takeSign(text, '-') ||
      !takeNumber(text, 2, 2, day) || !takeSign(text, 'T') || !takeNumber(text, 2, 2, hour) || !takeSign(text, ':') ||
      !takeNumber(text, 2, 2, minute) || !takeSign(text, ':') || !takeNumber(text, 2, 2, second) ||
      !takeSign(text, 'Z') || !text.empty()) {
    return std::nullopt;
  }
  if (month < 1 || month > 12 || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  const CivilDay civil{negative ? -year : year, static_cast<unsigned>(month), static_cast<unsigned>(day)};
  const std::int64_t days = daysSince1970(civil);
  // A day that its month doesn't have would come back as another one.
  if (day < 1 || civilDay(days).day != civil.day) return std::nullopt;
  return Date{days * kSecondsPerDay + hour * 3600 + minute * 60 + second, 0};
}

}  // namespace vantrell
