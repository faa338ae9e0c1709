// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantrell {

/// What a raw value of the type is divided by: 1 for "flt ", a power of two for the 31 fixed-point types, -1 for
/// everything else.
///
/// A fixed-point type is "fp" (unsigned) or "sp" (signed) and two hexadecimal digits in lower case: the bits before and
/// after the binary point. They make 16 together, the sign included: "fp88" has 8 and 8, "sp78" has 7 and 8. An "fp"
/// type has at least one bit on either side; "spf0" is a whole number.
double divisorForSmcType(std::uint32_t code);

/// `value` as the 16 bits of a fixed-point type, in host byte order: multiplied by the divisor, truncated toward zero.
/// What the type can't hold becomes the nearest that it can ("flt " counts as anything from -32768 to 65535), what is
/// not a number becomes 0. Nothing for an empty type and for one without a divisor.
std::optional<std::uint16_t> smcShortForDouble(double value, std::string_view typeCode);

}  // namespace vantrell
