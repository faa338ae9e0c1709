// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstring>

namespace vantrell::host {

inline bool isDotOrDotDot(const char* name) noexcept {
  return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

/// Whether `name` can only be an entry of the folder it is looked up in.
inline bool isEntryName(const char* name) noexcept {
  return name && *name && !isDotOrDotDot(name) && !std::strchr(name, '/');
}

}  // namespace vantrell::host
