// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>

#include "host/posix/MessageLimits.h"

namespace vantrell::host {

// Bounds of the D-Bus protocol.
inline constexpr std::size_t kMaximumArrayBytes = std::size_t{64} << 20;
inline constexpr std::size_t kMaximumWholeMessageBytes = std::size_t{128} << 20;

/// The message key whose value, an array of dictionaries, always has the same signature on the wire.
inline constexpr char kFileObjectInfoKey[] = "FileObjectInfo";

// Signatures of the kinds that are made of others; a variant holds one of these or a basic type.
inline constexpr char kDataSignature[] = "ay";
inline constexpr char kDateSignature[] = "(xu)";
inline constexpr char kArraySignature[] = "av";
inline constexpr char kDictionariesSignature[] = "aa{sv}";
inline constexpr char kDictionarySignature[] = "a{sv}";
inline constexpr char kErrorSignature[] = "(sxa{sv})";
inline constexpr char kErrorOrNilSignature[] = "a(sxa{sv})";

}  // namespace vantrell::host
