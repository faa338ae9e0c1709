// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include "foundation/Data.h"
#include "host/linux/codesign/CodeDirectory.h"

namespace vantrell::host::codesign {

/// The first page of `code` that isn't as the directory says; nothing when all are. `code` is what the directory
/// covers, of exactly its code limit's length. Large code is hashed by two threads.
std::optional<std::uint32_t> firstAlteredPage(const CodeDirectory& directory, DataView code);

}  // namespace vantrell::host::codesign
