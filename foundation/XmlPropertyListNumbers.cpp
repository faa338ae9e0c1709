// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/XmlPropertyListNumbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "foundation/DecimalText.h"

namespace vantrell {

namespace {

constexpr std::string_view kSpace = " \t\r\n";

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(kSpace);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

/// Takes a sign off; true when it was a minus.
bool takeSign(std::string_view& text) {
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  return negative;
}

char lowerCase(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
}

}  // namespace

std::optional<Number> integerFromXmlText(std::string_view text) {
  text = trimmed(text);
  const bool negative = takeSign(text);
  int base = 10;
  if (text.size() > 2 && text[0] == '0' && lowerCase(text[1]) == 'x') {
    base = 16;
    text.remove_prefix(2);
  }
  std::uint64_t magnitude = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  constexpr std::uint64_t kLargest = std::numeric_limits<std::int64_t>::max();
  if (negative) {
    if (magnitude > kLargest + 1) return std::nullopt;
    return Number(static_cast<std::int64_t>(0 - magnitude));
  }
  return magnitude > kLargest ? Number(magnitude) : Number(static_cast<std::int64_t>(magnitude));
}

std::optional<double> realFromXmlText(std::string_view text) {
  text = trimmed(text);
  std::string lower(text);
  std::ranges::transform(lower, lower.begin(), lowerCase);
  if (lower == "nan") return std::numeric_limits<double>::quiet_NaN();
  const bool negative = takeSign(text);
  const double sign = negative ? -1.0 : 1.0;
  const auto word = std::string_view(lower).substr(lower.size() - text.size());
  if (word == "inf" || word == "infinity") return sign * std::numeric_limits<double>::infinity();
  const auto magnitude = realFromDecimalText(word);
  if (!magnitude) return std::nullopt;
  return sign * *magnitude;
}

std::string xmlTextFromReal(double real) {
  if (std::isnan(real)) return "nan";
  if (std::isinf(real)) return real > 0 ? "+infinity" : "-infinity";
  return Number(real).description();
}

}  // namespace vantrell
