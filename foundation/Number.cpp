// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Number.h"

#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace vantrell {

namespace {
constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr double kTwoTo64 = 18446744073709551616.0;

std::int64_t clampToSigned(double value) noexcept {
  if (std::isnan(value)) return 0;
  if (value >= kTwoTo63) return std::numeric_limits<std::int64_t>::max();
  if (value < -kTwoTo63) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(value);
}

// Exact: converting the integer to a double instead would round it from 2^53 on.
bool equalsInteger(double real, bool negative, std::uint64_t bits) noexcept {
  if (std::trunc(real) != real) return false;
  if (negative) {
    return real < 0 && real >= -kTwoTo63 && static_cast<std::int64_t>(real) == static_cast<std::int64_t>(bits);
  }
  return real >= 0 && real < kTwoTo64 && static_cast<std::uint64_t>(real) == bits;
}
}  // namespace

bool Number::boolValue() const noexcept {
  return kind_ == Kind::Real ? value_.r != 0.0 : value_.u != 0;
}

std::int64_t Number::signedValue() const noexcept {
  switch (kind_) {
    case Kind::Signed:
      return value_.s;
    case Kind::Real:
      return clampToSigned(value_.r);
    default:
      return static_cast<std::int64_t>(value_.u);
  }
}

std::uint64_t Number::unsignedValue() const noexcept {
  switch (kind_) {
    case Kind::Signed:
      return static_cast<std::uint64_t>(value_.s);
    case Kind::Real:
      if (value_.r >= kTwoTo63) {
        return value_.r >= kTwoTo64 ? std::numeric_limits<std::uint64_t>::max() : static_cast<std::uint64_t>(value_.r);
      }
      return static_cast<std::uint64_t>(clampToSigned(value_.r));
    default:
      return value_.u;
  }
}

double Number::doubleValue() const noexcept {
  switch (kind_) {
    case Kind::Signed:
      return static_cast<double>(value_.s);
    case Kind::Real:
      return value_.r;
    default:
      return static_cast<double>(value_.u);
  }
}

bool Number::operator==(const Number& other) const noexcept {
  const bool negative = kind_ == Kind::Signed && value_.s < 0;
  const bool otherNegative = other.kind_ == Kind::Signed && other.value_.s < 0;
  if (kind_ == Kind::Real && other.kind_ == Kind::Real) return value_.r == other.value_.r;
  if (kind_ == Kind::Real) return equalsInteger(value_.r, otherNegative, other.unsignedValue());
  if (other.kind_ == Kind::Real) return equalsInteger(other.value_.r, negative, unsignedValue());
  return negative == otherNegative && unsignedValue() == other.unsignedValue();
}

std::string Number::description() const {
  switch (kind_) {
    case Kind::Signed:
      return fmt::format("{}", value_.s);
    case Kind::Real:
      return fmt::format("{}", value_.r);
    default:
      return fmt::format("{}", value_.u);
  }
}

}  // namespace vantrell
