// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string_view>

namespace vantrell {

/// The number that text stands for as a whole: digits of ASCII with at most one point among them (a digit on at least
/// one side of it), then perhaps "e" or "E" and an exponent. No sign in front, no space. What is too large is infinite,
/// what is too small 0. Nothing for any other text.
std::optional<double> realFromDecimalText(std::string_view text);

}  // namespace vantrell
