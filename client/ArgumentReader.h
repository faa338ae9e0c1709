// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "catalogue/QELPrivilegedOperation.h"
#include "foundation/Number.h"
#include "foundation/Value.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Longer files are not read as an argument: the transport carries no longer data, and each argument travels twice.
inline constexpr std::uint64_t kLongestDataArgument = std::uint64_t{60} << 20;  // bytes

/// The words of a command line as the operation's arguments: text (S) as it stands, numbers (N) see numberFromWord,
/// data (D) as "@FILE", the content of a file, or "hex:" and pairs of hexadecimal digits. A variable count takes any
/// words as text. Otherwise a sentence that says what is wrong.
std::expected<Array, std::string> readArguments(const QELPrivilegedOperation& operation,
                                                std::span<const std::string> words, host::FileSystem& fileSystem);

/// Decimal, with a minus sign or without; hexadecimal with "0x"; real when there is a decimal point in it. The whole
/// word must be used and the number fit 64 bits.
std::optional<Number> numberFromWord(std::string_view word);

}  // namespace vantrell
