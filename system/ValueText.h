// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vantrell {

/// The types that a value given as text is read as; Other stands for every type that there is no text for.
enum class CoreFoundationType : std::uint8_t { Boolean, Number, String, Data, Other };

CoreFoundationType coreFoundationTypeOf(const Value& value);

/// The value that `text` says, or nothing:
///
/// - Boolean: "true" or "false".
/// - Number: the integer at the text's beginning, behind white space and with a sign if there is one; 0 without one.
/// What
///   exceeds 64 bits is the largest or smallest number.
/// - String: the text.
/// - Data: groups of "%" and hexadecimal digits, each group one byte; white space may stand before and between groups.
/// A
///   third of the text's length (in UTF-16 units) is the most bytes there can be: what follows those is not looked at.
///   Of fewer than 3 units, or with anything else among the groups, there is no data.
std::optional<Value> copyCoreFoundationValueWithType(CoreFoundationType type, std::string_view forValueInString);

/// The value of a text that is a property list of any form. Nothing for an empty text. A text that is none is POSIX
/// error 22 with the reader's error underneath.
Result<std::optional<Value>> propertyListValueFromText(std::string_view text);

}  // namespace vantrell
