// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <compare>
#include <string_view>

namespace vantrell {

/// The order of two UTF-8 texts character by character, upper and lower case of the Latin, Greek, Cyrillic and Armenian
/// letters being equal. A letter with a mark and the same as letter and combining mark are two things here. Bytes that
/// are no UTF-8 count as U+FFFD.
std::weak_ordering caseInsensitiveOrder(std::string_view one, std::string_view other);

}  // namespace vantrell
