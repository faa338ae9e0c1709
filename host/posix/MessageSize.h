// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>

#include "foundation/Dictionary.h"
#include "foundation/Value.h"

namespace vantrell::host {

/// About what a value holds in memory, with everything in it. Roughly what it takes on its way, too.
std::size_t heldBytes(const Value& value) noexcept;
std::size_t heldBytes(const Array& array) noexcept;
std::size_t heldBytes(const Dictionary& dictionary) noexcept;

}  // namespace vantrell::host
