// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string_view>

namespace vantrell::host {

/// Whether some variable of a kernel might bear this name: components with a dot between them, none of them empty, and
/// no slash or zero byte anywhere. A component made of dots alone shows up as empty ones.
inline bool canBeKernelVariable(std::string_view name) noexcept {
  return !name.empty() && !name.starts_with('.') && !name.ends_with('.') && !name.contains("..") &&
         name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
}

}  // namespace vantrell::host
