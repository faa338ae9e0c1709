// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "foundation/Data.h"

namespace vantrell::host {

/// Reads marshalled D-Bus values from bytes that nobody has checked. Nothing is read beyond the innermost open array;
/// padding has to be zero, text has to be what may be sent (WireText.h) with its zero byte behind it, lengths have to
/// hold. Each call is false where the bytes are not what was asked for; nothing more is to be read then. A source of
/// ValueReader.
///
/// Texts that it hands out refer to the bytes.
class MarshalledReader {
 public:
  /// `bytes` begins where a message does, since alignment counts from there; reading begins at `offset`, which is not
  /// beyond the end. `isSwapped` for the byte order that is not this machine's.
  MarshalledReader(std::string_view bytes, std::size_t offset, bool isSwapped) noexcept
      : begin_(bytes.data()), at_(offset), end_(bytes.size()), isSwapped_(isSwapped) {}

  using Signature = std::string_view;

  // See ValueReader.
  [[nodiscard]] bool enter(char type, const char* contents) noexcept;
  [[nodiscard]] bool enterVariant(Signature& contents) noexcept { return signature(contents); }
  [[nodiscard]] bool leave(char type) noexcept;
  bool more() const noexcept { return at_ < end_; }
  template <class T>
  [[nodiscard]] bool number(char, T& value) noexcept {
    if (!align(sizeof value) || end_ - at_ < sizeof value) return false;
    std::memcpy(&value, begin_ + at_, sizeof value);
    if (isSwapped_) value = swapped(value);
    at_ += sizeof value;
    return true;
  }
  [[nodiscard]] bool boolean(bool& value) noexcept;
  [[nodiscard]] bool text(std::string_view& text) noexcept;
  [[nodiscard]] bool data(DataView& bytes) noexcept;

  /// g: at most 255 bytes. Which types it names is not looked at.
  [[nodiscard]] bool signature(std::string_view& text) noexcept;
  /// Passes over padding.
  [[nodiscard]] bool align(std::size_t alignment) noexcept {
    const std::size_t padding = (~at_ + 1) & (alignment - 1);
    if (padding == 0) return true;
    return skipPadding(padding);
  }
  std::size_t offset() const noexcept { return at_; }

 private:
  // Deeper than values within bounds can be nested: each takes two arrays at most.
  static constexpr std::size_t kMaximumOpenArrays = 64;

  bool skipPadding(std::size_t count) noexcept;
  bool enterArray(std::size_t alignment) noexcept;

  template <class T>
  static T swapped(T value) noexcept {
    if constexpr (std::integral<T>) {
      return std::byteswap(value);
    } else {
      return std::bit_cast<T>(std::byteswap(std::bit_cast<std::uint64_t>(value)));
    }
  }

  const char* begin_;
  std::size_t at_;
  std::size_t end_;  // of the innermost open array
  const bool isSwapped_;
  std::size_t openArrays_ = 0;
  std::array<std::size_t, kMaximumOpenArrays> outerEnds_;
};

}  // namespace vantrell::host
