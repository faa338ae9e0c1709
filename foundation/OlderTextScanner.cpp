// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/OlderTextScanner.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "foundation/Unicode.h"

namespace vantrell {

namespace {

// Octal escapes name characters of the NeXTSTEP encoding; this is its upper half.
constexpr std::array<std::uint16_t, 128> kNextstepUpperHalf = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC,
    0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9, 0x00DA, 0x00DB,
    0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192,
    0x00A7, 0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x00AE, 0x2013, 0x2020, 0x2021,
    0x00B7, 0x00A6, 0x00B6, 0x2022, 0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9,
    0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD,
    0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5,
    0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1,
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB,
    0x0131, 0x00FC, 0x00FD, 0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD};

bool isUnquoted(char character) noexcept {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         (character >= '0' && character <= '9') || std::string_view("_$/:.-").find(character) != std::string_view::npos;
}

bool isOctal(char character) noexcept {
  return character >= '0' && character <= '7';
}

std::optional<std::uint8_t> hexDigit(char character) noexcept {
  if (character >= '0' && character <= '9') return static_cast<std::uint8_t>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<std::uint8_t>(character - 'a' + 10);
  if (character >= 'A' && character <= 'F') return static_cast<std::uint8_t>(character - 'A' + 10);
  return std::nullopt;
}

char escaped(char character) noexcept {
  switch (character) {
    case 'a':
      return '\a';
    case 'b':
      return '\b';
    case 'f':
      return '\f';
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'v':
      return '\v';
    default:
      return character;
  }
}

}  // namespace

bool OlderTextScanner::refuse(const char* problem) noexcept {
  problem_ = problem;
  return false;
}

bool OlderTextScanner::take(char character) noexcept {
  if (atEnd() || peek() != character) return false;
  ++at_;
  return true;
}

std::size_t OlderTextScanner::spaceLength() const noexcept {
  if (atEnd()) return 0;
  if (peek() == ' ' || (peek() >= '\t' && peek() <= '\r')) return 1;
  // Unicode's line and paragraph separators.
  return rest().starts_with("\u2028") || rest().starts_with("\u2029") ? 3 : 0;
}

bool OlderTextScanner::skipSpace() {
  for (;;) {
    if (const std::size_t length = spaceLength()) {
      at_ += length;
    } else if (rest().starts_with("//") || rest().starts_with("/*")) {
      if (!skipComment()) return false;
    } else {
      return true;
    }
  }
}

bool OlderTextScanner::skipComment() {
  if (rest().starts_with("//")) {
    at_ = std::min(text_.find_first_of("\r\n", at_), text_.size());
    return true;
  }
  const std::size_t end = text_.find("*/", at_ + 2);
  if (end == text_.npos) return refuse("a comment without an end");
  at_ = end + 2;
  return true;
}

bool OlderTextScanner::atString() const noexcept {
  return !atEnd() && (peek() == '"' || peek() == '\'' || isUnquoted(peek()));
}

std::optional<std::string> OlderTextScanner::string() {
  return isUnquoted(peek()) ? unquotedString() : quotedString();
}

std::string OlderTextScanner::unquotedString() {
  const std::size_t start = at_;
  while (!atEnd() && isUnquoted(peek())) ++at_;
  return std::string(text_.substr(start, at_ - start));
}

std::optional<std::string> OlderTextScanner::quotedString() {
  const char quote = text_[at_++];
  std::string string;
  while (!atEnd()) {
    const char character = text_[at_++];
    if (character == quote) return string;
    if (character != '\\') {
      string.push_back(character);
    } else if (!escape(string)) {
      return std::nullopt;
    }
  }
  refuse("a string without an end");
  return std::nullopt;
}

// The backslash has been passed.
bool OlderTextScanner::escape(std::string& string) {
  if (atEnd()) return refuse("a string without an end");
  if (take('U')) return unicodeEscape(string);
  if (!isOctal(peek())) {
    string.push_back(escaped(text_[at_++]));
    return true;
  }
  unsigned code = 0;
  for (int digits = 0; digits < 3 && !atEnd() && isOctal(peek()); ++digits) {
    code = code * 8 + static_cast<unsigned>(text_[at_++] - '0');
  }
  if (code > 0xFF) return refuse("an octal escape of more than eight bits");
  appendUtf8(string, code < 0x80 ? code : kNextstepUpperHalf[code - 0x80]);
  return true;
}

// Characters beyond 16 bits are two such escapes, a surrogate each.
bool OlderTextScanner::unicodeEscape(std::string& string) {
  const auto first = utf16Unit();
  if (!first) return refuse("a Unicode escape without digits");
  const bool high = (*first & 0xFC00) == 0xD800;
  if (!high) {
    appendUtf8(string, (*first & 0xFC00) == 0xDC00 ? kReplacementCharacter : *first);
    return true;
  }
  const std::size_t behindFirst = at_;
  if (rest().starts_with("\\U")) {
    at_ += 2;
    const auto second = utf16Unit();
    if (second && (*second & 0xFC00) == 0xDC00) {
      appendUtf8(string, 0x10000 + ((*first & 0x3FF) << 10) + (*second & 0x3FF));
      return true;
    }
  }
  at_ = behindFirst;
  appendUtf8(string, kReplacementCharacter);
  return true;
}

// One to four hexadecimal digits.
std::optional<char32_t> OlderTextScanner::utf16Unit() {
  char32_t unit = 0;
  int digits = 0;
  for (; digits < 4 && !atEnd(); ++digits, ++at_) {
    const auto digit = hexDigit(peek());
    if (!digit) break;
    unit = unit << 4 | *digit;
  }
  if (digits == 0) return std::nullopt;
  return unit;
}

std::optional<Data> OlderTextScanner::data() {
  ++at_;
  Data bytes;
  for (;;) {
    while (const std::size_t length = spaceLength()) at_ += length;
    if (take('>')) return bytes;
    if (text_.size() - at_ < 2) break;
    const auto high = hexDigit(text_[at_]);
    const auto low = hexDigit(text_[at_ + 1]);
    if (!high || !low) break;
    bytes.push_back(static_cast<std::uint8_t>(*high << 4 | *low));
    at_ += 2;
  }
  refuse("malformed data");
  return std::nullopt;
}

std::size_t OlderTextScanner::line() const noexcept {
  return 1 + static_cast<std::size_t>(std::ranges::count(text_.substr(0, at_), '\n'));
}

}  // namespace vantrell
