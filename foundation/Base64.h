// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Data.h"

namespace vantrell {

/// RFC 4648's base 64, padded, without line breaks.
std::string base64FromData(DataView bytes);

/// Nothing when `text` is malformed. Space, tab, line feed and carriage return count for nothing wherever they stand;
/// padding is required, and nothing may follow it.
std::optional<Data> dataFromBase64(std::string_view text);

}  // namespace vantrell
