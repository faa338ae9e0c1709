// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Data.h"
#include "foundation/PropertyList.h"
#include "foundation/Result.h"
#include "foundation/Value.h"

namespace vantrell {

/// Reads the text form of NeXTSTEP and OpenStep:
///
///     { key = value; "another key" = ( one, "two", 'three', ); data = <0fbd77 1c2735ae>; }   // and /* comments */
///
/// and the form of strings files, which is a dictionary's contents without the braces. All scalars are texts or data;
/// a key alone, "key;", stands for itself. The encoding is UTF-8, or UTF-16 with a byte-order mark. Text of nothing but
/// white space and comments is an empty dictionary; no bytes at all are an error. Contract and errors are
/// propertyListFromData's.
Result<Value> valueFromOlderTextPropertyList(DataView data, const PropertyListLimits& limits);

}  // namespace vantrell
