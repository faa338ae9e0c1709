// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Unicode.h"

#include <cstdint>

namespace vantrell {

namespace {

// What a lead byte announces: the length, and the range of the second byte that leaves out overlong forms, surrogates
// and what lies above U+10FFFF (Unicode, table 3-7).
struct LeadByte {
  std::size_t length;
  std::uint8_t low;
  std::uint8_t high;
};

LeadByte leadByte(std::uint8_t byte) noexcept {
  if (byte >= 0xC2 && byte <= 0xDF) return {2, 0x80, 0xBF};
  if (byte == 0xE0) return {3, 0xA0, 0xBF};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {3, 0x80, 0xBF};
  if (byte == 0xF0) return {4, 0x90, 0xBF};
  if (byte >= 0xF1 && byte <= 0xF3) return {4, 0x80, 0xBF};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

char32_t utf16UnitAt(DataView bytes, std::size_t at, ByteOrder order) noexcept {
  const bool big = order == ByteOrder::BigEndian;
  return static_cast<char32_t>(bytes[at + (big ? 0 : 1)] << 8 | bytes[at + (big ? 1 : 0)]);
}

bool isHighSurrogate(char32_t unit) noexcept {
  return (unit & 0xFFFFFC00) == 0xD800;
}
bool isLowSurrogate(char32_t unit) noexcept {
  return (unit & 0xFFFFFC00) == 0xDC00;
}

}  // namespace

DecodedCharacter decodeUtf8(std::string_view text) noexcept {
  const auto first = static_cast<std::uint8_t>(text.front());
  if (first < 0x80) return {first, 1, true};
  auto [length, low, high] = leadByte(first);
  if (length == 0) return {};
  char32_t codePoint = first & (0xFFu >> (length + 1));
  for (std::size_t taken = 1; taken < length; ++taken) {
    if (taken == text.size()) return {kReplacementCharacter, taken, false};
    const auto next = static_cast<std::uint8_t>(text[taken]);
    if (next < low || next > high) return {kReplacementCharacter, taken, false};
    codePoint = codePoint << 6 | (next & 0x3Fu);
    low = 0x80;
    high = 0xBF;
  }
  return {codePoint, length, true};
}

bool isWellFormedUtf8(std::string_view text) noexcept {
  if (isAscii(bytesOf(text))) return true;
  while (!text.empty()) {
    const auto character = decodeUtf8(text);
    if (!character.wellFormed) return false;
    text.remove_prefix(character.length);
  }
  return true;
}

void appendUtf8(std::string& text, char32_t codePoint) {
  const auto append = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  const auto continuation = [codePoint](unsigned shift) { return 0x80 | (codePoint >> shift & 0x3F); };
  if (codePoint < 0x80) {
    append(codePoint);
  } else if (codePoint < 0x800) {
    append(0xC0 | codePoint >> 6);
    append(continuation(0));
  } else if (codePoint < 0x10000) {
    append(0xE0 | codePoint >> 12);
    append(continuation(6));
    append(continuation(0));
  } else {
    append(0xF0 | codePoint >> 18);
    append(continuation(12));
    append(continuation(6));
    append(continuation(0));
  }
}

DecodedCharacter decodeUtf16(DataView bytes, ByteOrder order) noexcept {
  if (bytes.size() < 2) return {};
  const char32_t first = utf16UnitAt(bytes, 0, order);
  if (!isHighSurrogate(first) && !isLowSurrogate(first)) return {first, 2, true};
  if (isLowSurrogate(first) || bytes.size() < 4) return {kReplacementCharacter, 2, false};
  const char32_t second = utf16UnitAt(bytes, 2, order);
  if (!isLowSurrogate(second)) return {kReplacementCharacter, 2, false};
  return {0x10000 + ((first & 0x3FF) << 10) + (second & 0x3FF), 4, true};
}

bool isWellFormedUtf16(DataView bytes, ByteOrder order) noexcept {
  while (!bytes.empty()) {
    const auto character = decodeUtf16(bytes, order);
    if (!character.wellFormed) return false;
    bytes = bytes.subspan(character.length);
  }
  return true;
}

std::string utf8FromUtf16(DataView bytes, ByteOrder order) {
  std::string text;
  text.reserve(bytes.size() / 2);
  while (!bytes.empty()) {
    const auto character = decodeUtf16(bytes, order);
    appendUtf8(text, character.codePoint);
    bytes = bytes.subspan(character.length);
  }
  return text;
}

}  // namespace vantrell
