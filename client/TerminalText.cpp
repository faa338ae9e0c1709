// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/TerminalText.h"

#include <fmt/core.h>

#include "foundation/Unicode.h"

namespace vantrell {

namespace {

bool isControl(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0);
}

/// A name that holds them can pass for another one (Unicode Technical Report 36, 2.5).
bool isDirectional(char32_t c) {
  return c == 0x061C || c == 0x200E || c == 0x200F || (c >= 0x2028 && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
}

std::string escaped(char32_t c) {
  switch (c) {
    case U'\n':
      return "\\n";
    case U'\t':
      return "\\t";
    case U'\r':
      return "\\r";
    default:
      return c < 0x80 ? fmt::format("\\x{:02x}", static_cast<unsigned>(c))
                      : fmt::format("\\u{{{:x}}}", static_cast<unsigned>(c));
  }
}

}  // namespace

std::string terminalSafe(std::string_view text, LineBreaks lineBreaks) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    const auto character = decodeUtf8(text);
    const auto bytes = text.substr(0, character.length);
    text.remove_prefix(character.length);
    if (!character.wellFormed) {
      for (const char byte : bytes) result += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    } else if (character.codePoint == U'\n' && lineBreaks == LineBreaks::Keep) {
      result += '\n';
    } else if (isControl(character.codePoint) || isDirectional(character.codePoint)) {
      result += escaped(character.codePoint);
    } else {
      result += bytes;
    }
  }
  return result;
}

}  // namespace vantrell
