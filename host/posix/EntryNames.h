// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstring>
#include <optional>
#include <string>

namespace vantrell::host {

inline bool isDotOrDotDot(const char* name) noexcept {
  return name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
}

/// Whether `name` can only be an entry of the folder it is looked up in.
inline bool isEntryName(const char* name) noexcept {
  return name && *name && !isDotOrDotDot(name) && !std::strchr(name, '/');
}

/// A kernel would silently act on what precedes a zero byte.
inline bool holdsZero(const std::string& path) noexcept {
  return path.find('\0') != std::string::npos;
}

/// A path's last component and the path of the folder that it is looked up in.
struct SplitPath {
  std::string folder;
  std::string name;
};

/// Slashes at the end don't count. Nothing when the path has no last component of its own: it is empty or ends in "/",
/// "." or "..".
inline std::optional<SplitPath> splitPath(const std::string& path) {
  const auto end = path.find_last_not_of('/') + 1;
  const auto start = path.find_last_of('/', end == 0 ? 0 : end - 1) + 1;
  if (start >= end) return std::nullopt;
  SplitPath split{start == 0 ? "." : path.substr(0, start), path.substr(start, end - start)};
  if (isDotOrDotDot(split.name.c_str())) return std::nullopt;
  return split;
}

}  // namespace vantrell::host
