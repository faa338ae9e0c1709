// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <compare>
#include <cstdint>

namespace vantrell {

/// A moment: seconds since 1970-01-01 00:00 UTC (negative before it) and the nanoseconds that follow (0 to 999999999).
struct Date {
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;

  /// The present moment of the system's wall clock.
  static Date now();

  /// From seconds since 2001-01-01 00:00 UTC, the reference date of property lists. Values that no 64-bit second
  /// count holds are clamped; not-a-number becomes the reference date.
  static Date fromSecondsSinceReferenceDate(double seconds) noexcept;

  double secondsSinceReferenceDate() const noexcept;

  /// Seconds from `earlier` to this date; negative when this date is the earlier one.
  double secondsSince(const Date& earlier) const noexcept;

  auto operator<=>(const Date&) const = default;
};

/// Seconds between 1970-01-01 and 2001-01-01, both 00:00 UTC.
inline constexpr std::int64_t kReferenceDateSince1970 = 978307200;

}  // namespace vantrell
