// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "macho/LiteralStrings.h"

#include <algorithm>
#include <cstdint>

#include "foundation/Unicode.h"

namespace vantrell::macho {

namespace {

/// A byte's place in the order of UTF-16. Lead bytes 0xF0 and up stand for surrogate pairs (units 0xD800 to 0xDFFF),
/// which come after all that begins with 0xED and before the units 0xE000 and up (0xEE, 0xEF).
unsigned rank(char byte) noexcept {
  const auto value = static_cast<std::uint8_t>(byte);
  if (value >= 0xF0) return value - 2U;
  if (value >= 0xEE) return value + 0x10U;
  return value;
}

}  // namespace

std::optional<std::string> stringFromCString(const char* bytes, std::size_t maxLength) {
  if (bytes == nullptr || maxLength == 0) return std::nullopt;
  std::size_t length = 0;
  while (length < maxLength && bytes[length] != '\0') ++length;
  const std::string_view text(bytes, length);
  if (!isWellFormedUtf8(text)) return std::nullopt;
  return std::string(text);
}

bool LiteralOrder::operator()(std::string_view left, std::string_view right) const noexcept {
  return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end(),
                                      [](char a, char b) { return rank(a) < rank(b); });
}

}  // namespace vantrell::macho
