// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SmcFixedPoint.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "system/SmcCodes.h"

namespace vantrell {

namespace {

constexpr double kNoDivisor = -1.0;
constexpr int kNoDigit = -1;

enum class Family { None, Unsigned, Signed };

Family familyOf(std::uint32_t code) {
  switch (code >> 16) {
    case smcCode("\0\0fp"):
      return Family::Unsigned;
    case smcCode("\0\0sp"):
      return Family::Signed;
    default:
      return Family::None;
  }
}

int hexadecimalDigit(std::uint32_t character) {
  if (character >= '0' && character <= '9') return static_cast<int>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<int>(character - 'a' + 10);
  return kNoDigit;
}

}  // namespace

double divisorForSmcType(std::uint32_t code) {
  if (code == smcCode("flt ")) return 1.0;
  const auto family = familyOf(code);
  const int wholeBits = hexadecimalDigit(code >> 8 & 0xFF);
  const int fractionBits = hexadecimalDigit(code & 0xFF);
  if (family == Family::None || wholeBits == kNoDigit || fractionBits == kNoDigit) return kNoDivisor;
  const int signBits = family == Family::Signed ? 1 : 0;
  return signBits + wholeBits + fractionBits == 16 ? std::ldexp(1.0, fractionBits) : kNoDivisor;
}

std::optional<std::uint16_t> smcShortForDouble(double value, std::string_view typeCode) {
  const auto code = smcKeyFromString(typeCode);
  const double divisor = divisorForSmcType(code);
  if (divisor == kNoDivisor) return std::nullopt;
  if (std::isnan(value)) return std::uint16_t{0};
  const auto family = familyOf(code);
  const double least = family == Family::Unsigned ? 0 : std::numeric_limits<std::int16_t>::min();
  const double most =
      family == Family::Signed ? std::numeric_limits<std::int16_t>::max() : std::numeric_limits<std::uint16_t>::max();
  return static_cast<std::uint16_t>(static_cast<std::int32_t>(std::clamp(std::trunc(value * divisor), least, most)));
}

}  // namespace vantrell
