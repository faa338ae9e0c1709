// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Uuid.h"

#include <algorithm>

namespace vantrell {

std::optional<Uuid> Uuid::fromBytes(DataView bytes) noexcept {
  if (bytes.size() != kSize) return std::nullopt;
  Bytes copy;
  std::ranges::copy(bytes, copy.begin());
  return Uuid(copy);
}

Uuid Uuid::fromRandomBytes(Bytes random) noexcept {
  random[6] = static_cast<std::uint8_t>((random[6] & 0x0F) | 0x40);
  random[8] = static_cast<std::uint8_t>((random[8] & 0x3F) | 0x80);
  return Uuid(random);
}

std::string Uuid::string() const {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(36);
  for (std::size_t i = 0; i < kSize; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes_[i] >> 4];
    text += kDigits[bytes_[i] & 0x0F];
  }
  return text;
}

}  // namespace vantrell
