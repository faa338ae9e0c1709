// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>

namespace vantrell::host {

/// True when D-Bus text may hold these bytes: UTF-8 without a zero byte. sd-bus also refuses the code points that
/// Unicode calls noncharacters, on both sides.
bool isSendableText(std::string_view text) noexcept;

/// The text with U+FFFD in the place of each byte or code point that may not be sent. File names are bytes, and a
/// message about one has to arrive all the same.
std::string sendableText(std::string_view text);

}  // namespace vantrell::host
