// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Date.h"

#include <chrono>
#include <cmath>

namespace vantrell {

namespace {
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
// Far inside the 64-bit range, so that adding the reference date's offset can't overflow: about 146 billion years.
constexpr double kLargestSeconds = 4.6e18;
}  // namespace

Date Date::now() {
  const auto elapsed =
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch());
  const auto whole = std::chrono::floor<std::chrono::seconds>(elapsed);
  return {whole.count(), static_cast<std::uint32_t>((elapsed - whole).count())};
}

Date Date::fromSecondsSinceReferenceDate(double seconds) noexcept {
  if (std::isnan(seconds)) return {kReferenceDateSince1970, 0};
  if (seconds > kLargestSeconds) seconds = kLargestSeconds;
  if (seconds < -kLargestSeconds) seconds = -kLargestSeconds;
  const double whole = std::floor(seconds);
  auto result = Date{static_cast<std::int64_t>(whole) + kReferenceDateSince1970,
                     static_cast<std::uint32_t>(std::llround((seconds - whole) * kNanosecondsPerSecond))};
  if (result.nanoseconds >= kNanosecondsPerSecond) {
    result.seconds += 1;
    result.nanoseconds = 0;
  }
  return result;
}

double Date::secondsSinceReferenceDate() const noexcept {
  return secondsSince({kReferenceDateSince1970, 0});
}

double Date::secondsSince(const Date& earlier) const noexcept {
  const double fraction =
      (static_cast<double>(nanoseconds) - static_cast<double>(earlier.nanoseconds)) / kNanosecondsPerSecond;
  // Whole seconds are subtracted as integers, which a double can't hold beyond 2^53; only dates that lie further apart
  // than 64 bits can say are left to it.
  std::int64_t whole = 0;
  if (__builtin_sub_overflow(seconds, earlier.seconds, &whole)) {
    return static_cast<double>(seconds) - static_cast<double>(earlier.seconds) + fraction;
  }
  return static_cast<double>(whole) + fraction;
}

}  // namespace vantrell
