// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "foundation/Dictionary.h"

namespace vantrell {

/// The first run of digits and dots in `text` as a number, all dots but the first left out: "Version 10.14.6" gives
/// 10.146. 0 where there is none; infinity where no number is large enough.
double versionNumberFromString(std::string_view text);

/// The short version, followed by the bundle version in parentheses if there is one that differs; nothing without a
/// short version.
std::optional<std::string> versionTextFromInformation(const Dictionary& information);

}  // namespace vantrell
