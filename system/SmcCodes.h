// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/Data.h"

namespace vantrell {

/// The code of a literal of four characters, zero bytes included: smcCode("ui8\0").
consteval std::uint32_t smcCode(const char (&text)[5]) {
  std::uint32_t code = 0;
  for (int i = 0; i < 4; ++i) code = code << 8 | static_cast<std::uint8_t>(text[i]);
  return code;
}

/// The code of a key or type: the first byte is the highest. 0 for a text that is not exactly four bytes long.
std::uint32_t smcKeyFromString(std::string_view text);

/// The text of a code, cut off at a zero byte and padded with blanks to four characters.
std::string stringFromSMCKey(std::uint32_t code);

/// Bytes that ought to be text, as text: themselves when they are UTF-8, else every byte as the character of that
/// number (Latin-1), so that different bytes stay different texts.
std::string textFromSmcBytes(std::string_view bytes);

}  // namespace vantrell
