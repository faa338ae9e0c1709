// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>

#include "foundation/BinaryPropertyListLayout.h"

namespace vantrell {

/// Checks all objects that can be reached from the root of a list of `size` bytes: references and offsets, contents,
/// nesting, and that nothing contains itself. nullptr when the list is sound, else what is wrong.
///
/// Every object is visited once, however often it is shared, so a list whose expansion would be exponential costs no
/// more than its size; and since the extents of the objects visited may not add up to more than the list, objects laid
/// over one another cost no more, either. Lists of up to 256 objects are checked without allocation, and no list by
/// recursion.
///
/// Containers nested deeper than `maximumDepth` or kDeepestPropertyList are a problem.
const char* problemOfBinaryPropertyList(const BinaryPropertyListLayout& layout, std::size_t size,
                                        std::size_t maximumDepth);

}  // namespace vantrell
