// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/Data.h"
#include "foundation/Value.h"

namespace vantrell {

/// Stands for values of types that are not known.
inline constexpr char kSmcDecodingNotImplemented[] = "<decoding is currently not implemented>";

/// The value that `size` bytes of the type mean; nothing when the type has another size, or they mean nothing. `bytes`
/// is the buffer that they were read into, at least `size` long.
///
/// Integers have the highest byte first. Kept for the sake of those who rely on it: "flt " is in host byte order, and a
/// byte of type "si8" is text, not a number (one beyond ASCII is no text and so means nothing).
std::optional<Value> decodedSmcValue(std::uint32_t typeCode, DataView bytes, std::size_t size);

}  // namespace vantrell
