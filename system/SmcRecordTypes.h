// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/Data.h"
#include "foundation/Dictionary.h"

namespace vantrell {

/// Whether values of the type are records of several fields.
bool isSmcRecordType(std::uint32_t typeCode);

/// The fields of such a value by name; nothing when `size` is not the type's. `bytes` holds the value and at least one
/// zero byte after it.
std::optional<Dictionary> smcRecordFields(std::uint32_t typeCode, DataView bytes, std::size_t size);

}  // namespace vantrell
