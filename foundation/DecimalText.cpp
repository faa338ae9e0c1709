// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/DecimalText.h"

#include <algorithm>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace vantrell {

namespace {

std::size_t digitsAtStart(std::string_view text) {
  return std::min(text.find_first_not_of("0123456789"), text.size());
}

bool isDecimal(std::string_view text) {
  const std::size_t whole = digitsAtStart(text);
  text.remove_prefix(whole);
  std::size_t fraction = 0;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    fraction = digitsAtStart(text);
    text.remove_prefix(fraction);
  }
  if (whole + fraction == 0) return false;
  if (text.empty()) return true;
  if (text.front() != 'e' && text.front() != 'E') return false;
  text.remove_prefix(1);
  if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
  return !text.empty() && digitsAtStart(text) == text.size();
}

}  // namespace

std::optional<double> realFromDecimalText(std::string_view text) {
  if (!isDecimal(text)) return std::nullopt;
  // A stream of the classic locale: from_chars for doubles is missing from some standard libraries, and strtod follows
  // the process's locale. On overflow a stream fails and gives the largest double.
  std::istringstream stream{std::string(text)};
  stream.imbue(std::locale::classic());
  double real = 0;
  stream >> real;
  if (stream.fail() && real >= std::numeric_limits<double>::max()) return std::numeric_limits<double>::infinity();
  return real;
}

}  // namespace vantrell
