// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vantrell {

/// Owned bytes.
using Data = std::vector<std::uint8_t>;

/// Borrowed bytes; the owner must outlive the view.
using DataView = std::span<const std::uint8_t>;

/// The bytes of a text, borrowed.
inline DataView bytesOf(std::string_view text) noexcept {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// Bytes looked at as text, borrowed; no check of the encoding.
inline std::string_view textOf(DataView bytes) noexcept {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace vantrell
