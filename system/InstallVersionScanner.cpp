// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/InstallVersionScanner.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace vantrell {
namespace {

void skipBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.size(), text.find_first_not_of(" \t\n\v\f\r")));
}

std::optional<std::int64_t> takeInteger(std::string_view& text) {
  skipBlanks(text);
  const bool isNegative = text.starts_with('-');
  if (isNegative || text.starts_with('+')) text.remove_prefix(1);
  if (text.empty() || text.front() < '0' || text.front() > '9') return std::nullopt;
  // With its sign put back, the smallest number is within range as well.
  const auto* const start = text.data();
  std::int64_t number = 0;
  const auto [end, problem] = std::from_chars(isNegative ? start - 1 : start, start + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - start));
  if (problem == std::errc()) return number;
  return isNegative ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

bool takeDot(std::string_view& text) {
  skipBlanks(text);
  if (!text.starts_with('.')) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

std::optional<std::int8_t> generationFromVersion(std::string_view version) {
  if (!takeInteger(version) || !takeDot(version)) return std::nullopt;
  const auto second = takeInteger(version);
  return second ? std::optional(static_cast<std::int8_t>(*second)) : std::nullopt;
}

}  // namespace vantrell
