// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Text from fixed-length name fields.
namespace vantrell::macho {

/// The text that begins at `bytes`: it ends before the first zero byte, or after `maxLength` bytes. Nothing for a null
/// pointer, a maximum of 0, and bytes that are not well-formed UTF-8 (overlong forms and surrogates are not).
std::optional<std::string> stringFromCString(const char* bytes, std::size_t maxLength);

/// What the platform's formatter puts in the place of a text that is missing.
inline constexpr std::string_view kMissingText = "(null)";

/// The platform's literal order of texts, by UTF-16 code units, for well-formed UTF-8. It differs from the order of the
/// bytes in one point: characters beyond U+FFFF come before U+E000 to U+FFFF.
struct LiteralOrder {
  using is_transparent = void;
  bool operator()(std::string_view left, std::string_view right) const noexcept;
};

}  // namespace vantrell::macho
