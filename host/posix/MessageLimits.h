// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>

namespace vantrell::host {

/// How deep arrays, dictionaries and errors may be nested within each other, in both directions. A message bus drops
/// whoever sends more than 64 containers within each other (limit of the D-Bus message protocol); an error takes four
/// of them, the list of arguments or the answer around it up to four more. The same on every host.
inline constexpr int kMaximumValueDepth = 15;

/// How many values one message may bring. The largest message, filled with the smallest values, would otherwise grow to
/// gigabytes here.
inline constexpr std::size_t kMaximumValueCount = std::size_t{4} << 20;

/// The largest message that both ends take (sd-bus's own bound is 128 MiB), with room for its header.
inline constexpr std::size_t kMaximumMessageBytes = (std::size_t{128} << 20) - 65536;

}  // namespace vantrell::host
