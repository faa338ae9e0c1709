// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Base64.h"

#include <array>
#include <cstdint>

namespace vantrell {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t kInvalid = 0xFF;

constexpr std::array<std::uint8_t, 256> kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kInvalid);
  for (std::size_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<std::uint8_t>(kAlphabet[i])] = static_cast<std::uint8_t>(i);
  }
  return values;
}();

constexpr bool isSpace(char character) noexcept {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r';
}

}  // namespace

std::string base64FromData(DataView bytes) {
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::size_t present = std::min<std::size_t>(3, bytes.size() - at);
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) group = group << 8 | (i < present ? bytes[at + i] : 0u);
    for (std::size_t i = 0; i < 4; ++i) {
      text.push_back(i <= present ? kAlphabet[group >> (18 - 6 * i) & 0x3F] : '=');
    }
  }
  return text;
}

std::optional<Data> dataFromBase64(std::string_view text) {
  Data bytes;
  bytes.reserve(text.size() / 4 * 3);
  std::uint32_t group = 0;
  unsigned digits = 0;   // of the group in hand
  unsigned padding = 0;  // '=' seen
  for (const char character : text) {
    if (isSpace(character)) continue;
    if (character == '=') {
      if (++padding + digits > 4 || digits < 2) return std::nullopt;
      continue;
    }
    const std::uint8_t value = kValues[static_cast<std::uint8_t>(character)];
    if (value == kInvalid || padding > 0) return std::nullopt;
    group = group << 6 | value;
    if (++digits == 4) {
      for (const unsigned shift : {16u, 8u, 0u}) bytes.push_back(static_cast<std::uint8_t>(group >> shift));
      group = 0;
      digits = 0;
    }
  }
  if (digits == 0) return padding == 0 ? std::optional(std::move(bytes)) : std::nullopt;
  if (digits + padding != 4) return std::nullopt;
  // Two digits carry one byte, three carry two; what is left over of the last digit says nothing.
  bytes.push_back(static_cast<std::uint8_t>(digits == 2 ? group >> 4 : group >> 10));
  if (digits == 3) bytes.push_back(static_cast<std::uint8_t>(group >> 2));
  return bytes;
}

}  // namespace vantrell
