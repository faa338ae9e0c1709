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
  return static_cast<double>(seconds) - static_cast<double>(kReferenceDateSince1970) +
         static_cast<double>(nanoseconds) / kNanosecondsPerSecond;
}

double Date::secondsSince(const Date& earlier) const noexcept {
  return static_cast<double>(seconds) - static_cast<double>(earlier.seconds) +
         (static_cast<double>(nanoseconds) - static_cast<double>(earlier.nanoseconds)) / kNanosecondsPerSecond;
}

}  // namespace vantrell
