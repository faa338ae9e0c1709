// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/DateText.h"

#include <cstdint>

#include <fmt/core.h>

#include "foundation/Iso8601.h"

namespace vantrell {

namespace {

constexpr std::int64_t kFarthest = 90'000'000LL * 365 * 86'400;  // seconds; within what the standard form can tell

std::string fractionText(std::uint32_t nanoseconds) {
  auto digits = fmt::format(".{:09}", nanoseconds);
  digits.erase(digits.find_last_not_of('0') + 1);
  return digits;
}

}  // namespace

std::string textOfDate(const Date& date) {
  const bool isFar = date.seconds > kFarthest || date.seconds < -kFarthest;
  auto text = isFar ? std::nullopt : iso8601FromDate({date.seconds, 0});
  if (!text) return fmt::format("@{}", date.seconds);
  if (date.nanoseconds != 0) text->insert(text->size() - 1, fractionText(date.nanoseconds));
  return *text;
}

}  // namespace vantrell
