// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cmath>
#include <cstdlib>

#include "foundation/PropertyList.h"
#include "foundation/Value.h"

namespace vantrell::fuzz {

inline void require(bool holds) {
  if (!holds) std::abort();
}

/// Equal, where not-a-number equals itself and dates may lose their fractions when `wholeSeconds`.
inline bool isSame(const Value& one, const Value& other, bool wholeSeconds) {
  if (const auto* number = one.asNumber()) {
    const auto* another = other.asNumber();
    if (another == nullptr || number->kind() != another->kind()) return false;
    return *number == *another || (std::isnan(number->doubleValue()) && std::isnan(another->doubleValue()));
  }
  if (const auto* date = one.asDate(); date != nullptr && wholeSeconds) {
    return other.asDate() != nullptr && date->seconds == other.asDate()->seconds;
  }
  if (const auto* array = one.asArray()) {
    const auto* another = other.asArray();
    if (another == nullptr || array->size() != another->size()) return false;
    for (std::size_t i = 0; i < array->size(); ++i) {
      if (!isSame((*array)[i], (*another)[i], wholeSeconds)) return false;
    }
    return true;
  }
  if (const auto* dictionary = one.asDictionary()) {
    const auto* another = other.asDictionary();
    if (another == nullptr || dictionary->size() != another->size()) return false;
    for (const auto& [key, value] : *dictionary) {
      const auto* found = another->find(key);
      if (found == nullptr || !isSame(value, *found, wholeSeconds)) return false;
    }
    return true;
  }
  return one == other;
}

inline bool holdsNull(const Value& value) {
  if (value.isNull()) return true;
  if (const auto* array = value.asArray()) {
    for (const auto& element : *array) {
      if (holdsNull(element)) return true;
    }
  }
  if (const auto* dictionary = value.asDictionary()) {
    for (const auto& [key, element] : *dictionary) {
      if (holdsNull(element)) return true;
    }
  }
  return false;
}

/// What was read can be written as binary, and where its characters and dates allow it as XML, and reads back the same;
/// written again, it is the same bytes.
inline void requireRoundTrips(const Value& value) {
  const auto binary = binaryPropertyListFromValue(value);
  require(binary.has_value() != holdsNull(value));
  if (!binary) return;
  const auto fromBinary = propertyListFromData(*binary);
  require(fromBinary.has_value() && fromBinary->format == PropertyListFormat::Binary);
  require(isSame(value, fromBinary->root, false));
  require(*binaryPropertyListFromValue(fromBinary->root) == *binary);

  const auto xml = xmlPropertyListFromValue(value);
  if (!xml) return;
  const auto fromXml = propertyListFromData(*xml);
  require(fromXml.has_value() && fromXml->format == PropertyListFormat::Xml);
  require(isSame(value, fromXml->root, true));
  require(*xmlPropertyListFromValue(fromXml->root) == *xml);
}

}  // namespace vantrell::fuzz
