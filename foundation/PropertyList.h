// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vantrell {

enum class PropertyListFormat : std::uint8_t { OlderText, Xml, Binary };

/// Containers within containers, the root's included, that are read or written at most, whatever the limits say:
/// values are destroyed and compared by recursion, which has to fit a thread's stack.
inline constexpr std::size_t kDeepestPropertyList = 512;

/// What a property list from outside may cost at most.
struct PropertyListLimits {
  std::size_t maximumSize = std::size_t{16} << 20;  // bytes of input
  std::size_t maximumDepth = kDeepestPropertyList;  // containers within containers
  std::size_t maximumObjects = 4'000'000;           // values made, shared ones counted each time they appear
};

struct PropertyList {
  Value root;
  PropertyListFormat format = PropertyListFormat::Binary;
};

/// Reads a list of any of the three formats, told apart by its first bytes. A list that is malformed, cyclic or over a
/// limit is an error of the Cocoa domain with code 3840 (the platform's code for a corrupt list); nothing is read
/// beyond the input and the stack used does not depend on it. Memory is linear in the input: of a binary list, whose
/// objects may be shared, at most 64 bytes of values come from each byte of input, beside the first mebibyte.
///
/// Integers become signed numbers, and unsigned ones where they exceed the signed range. A UID of the binary form, as
/// keyed archives hold them, becomes the dictionary {"CF$UID": number}, as the platform shows it in XML. Ill-formed
/// UTF-16 in a binary list is read with U+FFFD in its place; ill-formed text of the other forms is an error.
Result<PropertyList> propertyListFromData(DataView data, const PropertyListLimits& limits = {});

/// The binary form, version 00; equal scalars are written once. What a property list cannot hold (null, errors) and
/// what is nested deeper than kDeepestPropertyList is an error of the Cocoa domain with code 3851. Ill-formed UTF-8 is
/// written with U+FFFD in its place. A dictionary of exactly the shape {"CF$UID": 0 to 2^32 - 1} becomes a UID.
Result<Data> binaryPropertyListFromValue(const Value& root);

/// The XML form, version 1.0, UTF-8, tab-indented as the platform writes it, keys in the dictionary's order. The same
/// errors as the binary form, and code 3851 also for a text with characters that XML 1.0 has no way to write (control
/// characters but tab, line feed and carriage return; U+FFFE and U+FFFF) and for a date before year -99999999 or after
/// year 99999999. Fractions of seconds are dropped: the form has none.
Result<Data> xmlPropertyListFromValue(const Value& root);

inline constexpr std::int64_t kCocoaPropertyListReadCorrupt = 3840;
inline constexpr std::int64_t kCocoaPropertyListWriteInvalid = 3851;

}  // namespace vantrell
