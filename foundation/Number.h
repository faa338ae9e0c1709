// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <concepts>
#include <cstdint>
#include <string>

namespace vantrell {

/// A boxed number. It remembers which kind it was made from, since that decides how it travels (boolean, 64-bit signed,
/// 64-bit unsigned, double) and how it is written into property lists.
class Number {
 public:
  enum class Kind : std::uint8_t { Boolean, Signed, Unsigned, Real };

  Number() : Number(std::int64_t{0}) {}
  template <std::same_as<bool> T>  // nothing that merely converts to bool, such as a pointer
  Number(T value) : kind_(Kind::Boolean) {
    value_.u = value ? 1 : 0;
  }
  template <std::signed_integral T>
  Number(T value) : kind_(Kind::Signed) {
    value_.s = value;
  }
  template <std::unsigned_integral T>
  requires(!std::same_as<T, bool>) Number(T value) : kind_(Kind::Unsigned) { value_.u = value; }
  Number(double value) : kind_(Kind::Real) { value_.r = value; }

  Kind kind() const noexcept { return kind_; }

  /// Conversions wrap integers modulo 2^64, as the platform's boxed numbers do; a real is truncated toward zero and
  /// clamped to 64 bits (not-a-number gives 0), a negative one then wraps like an integer. The 32-bit values are the
  /// low 32 bits of the 64-bit ones.
  bool boolValue() const noexcept;
  std::int64_t signedValue() const noexcept;
  std::uint64_t unsignedValue() const noexcept;
  double doubleValue() const noexcept;
  std::int32_t int32Value() const noexcept { return static_cast<std::int32_t>(signedValue()); }
  std::uint32_t unsigned32Value() const noexcept { return static_cast<std::uint32_t>(unsignedValue()); }

  /// Equal as numbers, whatever the kinds: true equals 1, 1.0 equals 1. Exact: no rounding of large integers.
  bool operator==(const Number& other) const noexcept;

  /// Decimal text; "1" or "0" for booleans; the shortest text that reads back equal for reals.
  std::string description() const;

 private:
  Kind kind_;
  union {
    std::int64_t s;
    std::uint64_t u;
    double r;
  } value_;
};

}  // namespace vantrell
