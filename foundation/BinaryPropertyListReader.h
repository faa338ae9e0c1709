// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Data.h"
#include "foundation/PropertyList.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vantrell {

/// Values made of a binary list cost at most this much for each byte of the list, beside the allowance: 64 is more than
/// any list takes that doesn't share large objects.
inline constexpr std::size_t kBinaryPropertyListCostPerByte = 64;
inline constexpr std::size_t kBinaryPropertyListAllowance = std::size_t{1} << 20;

/// Reads the binary form. Contract and errors are propertyListFromData's.
Result<Value> valueFromBinaryPropertyList(DataView data, const PropertyListLimits& limits);

}  // namespace vantrell
