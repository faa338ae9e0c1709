// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/WireText.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vantrell::host {

namespace {

std::uint8_t byteAt(std::string_view text, std::size_t index) noexcept {
  return static_cast<std::uint8_t>(text[index]);
}

bool mayBeSent(std::uint32_t codePoint) noexcept {
  const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
  const bool noncharacter = (codePoint >= 0xFDD0 && codePoint <= 0xFDEF) || (codePoint & 0xFFFE) == 0xFFFE;
  return codePoint <= 0x10FFFF && !surrogate && !noncharacter;
}

struct Step {
  std::size_t length;  // bytes to go on by
  bool sendable;
};

// The character at the beginning of `text`, which is not empty. Of a malformed one a single byte is taken; a
// well-formed code point that may not be sent is taken as a whole.
Step firstCharacter(std::string_view text) noexcept {
  const std::uint8_t lead = byteAt(text, 0);
  if (lead < 0x80) return {1, lead != 0};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {1, false};
  std::uint32_t codePoint = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if ((byteAt(text, i) & 0xC0) != 0x80) return {1, false};
    codePoint = codePoint << 6 | (byteAt(text, i) & 0x3FU);
  }
  constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (codePoint < kSmallest[length]) return {1, false};
  return {length, mayBeSent(codePoint)};
}

// How many bytes at the beginning may be sent as they are.
std::size_t sendablePrefix(std::string_view text) noexcept {
  std::size_t at = 0;
  while (at < text.size()) {
    std::uint64_t eight = 0;
    if (text.size() - at >= sizeof eight) {
      std::memcpy(&eight, text.data() + at, sizeof eight);
      // All eight are ASCII and none is zero: no high bit, and taking 1 from each borrows from none.
      if (((eight | (eight - 0x0101010101010101U)) & 0x8080808080808080U) == 0) {
        at += sizeof eight;
        continue;
      }
    }
    if (const std::uint8_t byte = byteAt(text, at); byte != 0 && byte < 0x80) {
      ++at;  // what is left of most texts
      continue;
    }
    const Step step = firstCharacter(text.substr(at));
    if (!step.sendable) break;
    at += step.length;
  }
  return at;
}

}  // namespace

bool isSendableText(std::string_view text) noexcept {
  return sendablePrefix(text) == text.size();
}

std::string sendableText(std::string_view text) {
  std::string result;
  result.reserve(text.size() + 16);
  for (;;) {
    const std::size_t good = sendablePrefix(text);
    result += text.substr(0, good);
    text.remove_prefix(good);
    if (text.empty()) return result;
    result += "\xEF\xBF\xBD";
    text.remove_prefix(firstCharacter(text).length);
  }
}

}  // namespace vantrell::host
