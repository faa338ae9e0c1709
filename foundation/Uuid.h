// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>

#include "foundation/Data.h"

namespace vantrell {

/// A universally unique identifier (RFC 9562) in its 16-byte binary form.
class Uuid {
 public:
  static constexpr std::size_t kSize = 16;
  using Bytes = std::array<std::uint8_t, kSize>;

  Uuid() = default;
  explicit Uuid(const Bytes& bytes) : bytes_(bytes) {}

  /// Nothing unless `bytes` holds exactly 16 bytes; every bit pattern is accepted.
  static std::optional<Uuid> fromBytes(DataView bytes) noexcept;

  /// A version-4 identifier from 16 random bytes (version and variant bits are set here).
  static Uuid fromRandomBytes(Bytes random) noexcept;

  const Bytes& bytes() const noexcept { return bytes_; }

  /// The upper-case canonical form, 36 characters.
  std::string string() const;

  auto operator<=>(const Uuid&) const = default;

 private:
  Bytes bytes_{};
};

}  // namespace vantrell
