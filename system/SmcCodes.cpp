// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SmcCodes.h"

#include <algorithm>
#include <cstddef>

#include "foundation/Unicode.h"

namespace vantrell {

namespace {
constexpr std::size_t kCodeLength = 4;
}  // namespace

std::uint32_t smcKeyFromString(std::string_view text) {
  if (text.size() != kCodeLength) return 0;
  std::uint32_t code = 0;
  for (const char c : text) code = code << 8 | static_cast<std::uint8_t>(c);
  return code;
}

std::string stringFromSMCKey(std::uint32_t code) {
  std::string bytes;
  for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(code >> shift & 0xFF);
  bytes.resize(std::min(bytes.find('\0'), bytes.size()));
  bytes.resize(kCodeLength, ' ');
  return textFromSmcBytes(bytes);
}

std::string textFromSmcBytes(std::string_view bytes) {
  if (isWellFormedUtf8(bytes)) return std::string(bytes);
  std::string text;
  for (const char c : bytes) appendUtf8(text, static_cast<std::uint8_t>(c));
  return text;
}

}  // namespace vantrell
