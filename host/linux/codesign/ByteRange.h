// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include "foundation/Data.h"
#include "macho/MachORecords.h"

namespace vantrell::host::codesign {

/// `length` bytes of `bytes` from `offset` on, or nothing where they don't all lie within. No sum overflows.
inline std::optional<DataView> rangeOf(DataView bytes, std::uint64_t offset, std::uint64_t length) noexcept {
  if (offset > bytes.size() || length > bytes.size() - offset) return std::nullopt;
  return bytes.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(length));
}

/// Big-endian numbers, as all of a signature's are; all their bytes must lie within `bytes`.
inline std::uint32_t bigWord(DataView bytes, std::size_t offset) noexcept {
  return macho::readWord(bytes, offset, macho::Swapped::Yes);
}
inline std::uint64_t bigLongWord(DataView bytes, std::size_t offset) noexcept {
  return std::uint64_t{bigWord(bytes, offset)} << 32 | bigWord(bytes, offset + 4);
}

inline bool isAllZero(DataView bytes) noexcept {
  for (const std::uint8_t byte : bytes) {
    if (byte != 0) return false;
  }
  return true;
}

}  // namespace vantrell::host::codesign
