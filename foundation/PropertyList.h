// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vantrell {

enum class PropertyListFormat : std::uint8_t { OlderText, Xml, Binary };

/// What a property list from outside may cost at most.
struct PropertyListLimits {
  std::size_t maximumSize = std::size_t{16} << 20;  // bytes of input
  std::size_t maximumDepth = 512;                   // containers within containers
  std::size_t maximumObjects = 4'000'000;           // values made, shared ones counted each time they appear
};

struct PropertyList {
  Value root;
  PropertyListFormat format = PropertyListFormat::Binary;
};

/// Reads a list of any of the three formats, told apart by its first bytes. A list that is malformed, cyclic or over a
/// limit is an error of the Cocoa domain with code 3840 (the platform's code for a corrupt list); nothing is read
/// beyond the input and the stack used does not depend on it.
Result<PropertyList> propertyListFromData(DataView data, const PropertyListLimits& limits = {});

/// The binary form, version 00. Values that a property list cannot hold (null, errors) are an error of the Cocoa domain
/// with code 3851.
Result<Data> binaryPropertyListFromValue(const Value& root);

/// The XML form, version 1.0, UTF-8, tab-indented as the platform writes it, keys in the dictionary's order.
Result<Data> xmlPropertyListFromValue(const Value& root);

inline constexpr std::int64_t kCocoaPropertyListReadCorrupt = 3840;
inline constexpr std::int64_t kCocoaPropertyListWriteInvalid = 3851;

}  // namespace vantrell
