// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/Number.h"

namespace vantrell {

// The numbers of the XML form. White space around them counts for nothing.

/// Decimal, or hexadecimal after "0x", with an optional sign. Signed, and unsigned where it exceeds the signed range;
/// nothing for what fits neither.
std::optional<Number> integerFromXmlText(std::string_view text);

/// Decimal with an optional fraction and exponent, rounded to the nearest double (which may be infinite or zero);
/// "nan", "inf" and "infinity" in any case, the latter two with an optional sign.
std::optional<double> realFromXmlText(std::string_view text);

/// The shortest text that reads back equal; "nan", "+infinity" and "-infinity" for what is no number.
std::string xmlTextFromReal(double real);

}  // namespace vantrell
