// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>

#include "foundation/Data.h"

namespace vantrell {

/// Integers as the controller stores them, the highest byte first. `bytes` must reach that far.
inline std::uint16_t smcUnsigned16(DataView bytes, std::size_t offset = 0) {
  return static_cast<std::uint16_t>(bytes[offset] << 8 | bytes[offset + 1]);
}
inline std::int16_t smcSigned16(DataView bytes, std::size_t offset = 0) {
  return static_cast<std::int16_t>(smcUnsigned16(bytes, offset));
}
inline std::uint32_t smcUnsigned32(DataView bytes, std::size_t offset = 0) {
  return static_cast<std::uint32_t>(smcUnsigned16(bytes, offset)) << 16 | smcUnsigned16(bytes, offset + 2);
}

}  // namespace vantrell
