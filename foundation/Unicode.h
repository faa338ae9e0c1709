// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "foundation/Data.h"

namespace vantrell {

/// Stands for what is no character.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

struct DecodedCharacter {
  char32_t codePoint = kReplacementCharacter;
  std::size_t length = 1;  // bytes taken, at least 1
  bool wellFormed = false;
};

/// The first character of `text`, which must not be empty. Of ill-formed text the longest start of a character (or one
/// byte) is taken and stands for U+FFFD; overlong forms, surrogates and numbers above U+10FFFF are ill-formed.
DecodedCharacter decodeUtf8(std::string_view text) noexcept;

bool isWellFormedUtf8(std::string_view text) noexcept;

inline bool isAscii(DataView bytes) noexcept {
  constexpr std::uint64_t kHighBits = 0x8080808080808080;
  const std::uint8_t* const at = bytes.data();
  const std::size_t size = bytes.size();
  const auto wordAt = [at](std::size_t position) {
    std::uint64_t word;
    std::memcpy(&word, at + position, sizeof word);
    return word;
  };
  if (size >= sizeof(std::uint64_t)) {
    for (std::size_t i = 0; i + sizeof(std::uint64_t) <= size; i += sizeof(std::uint64_t)) {
      if ((wordAt(i) & kHighBits) != 0) return false;
    }
    return (wordAt(size - sizeof(std::uint64_t)) & kHighBits) == 0;
  }
  std::uint8_t all = 0;
  for (std::size_t i = 0; i < size; ++i) all |= at[i];
  return all < 0x80;
}

/// `codePoint` must be a scalar value: at most U+10FFFF and no surrogate.
void appendUtf8(std::string& text, char32_t codePoint);

enum class ByteOrder : bool { LittleEndian, BigEndian };

/// The first character of `bytes`, which must not be empty. A lone surrogate or a last odd byte is ill-formed.
DecodedCharacter decodeUtf16(DataView bytes, ByteOrder order) noexcept;

/// No lone surrogates and no odd byte.
bool isWellFormedUtf16(DataView bytes, ByteOrder order) noexcept;

/// UTF-16 as UTF-8; lone surrogates, and a last odd byte, become U+FFFD. A byte-order mark is not taken out.
std::string utf8FromUtf16(DataView bytes, ByteOrder order);

}  // namespace vantrell
