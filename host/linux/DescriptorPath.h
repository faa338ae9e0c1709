// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <charconv>
#include <climits>
#include <cstring>

namespace vantrell::host {

/// The path by which calls that take no descriptor reach an object that is held by one. The last component is a magic
/// link: calls that *follow* links come to the object itself, also when that is a symbolic link.
class DescriptorPath {
 public:
  explicit DescriptorPath(int descriptor) noexcept { append(descriptor); }

  /// An entry of the folder that is held; a link there is for the call to follow or not. Names are too long for any
  /// file system before they don't fit: then the path ends in one that is too long.
  DescriptorPath(int folder, const char* name) noexcept {
    char* end = append(folder);
    *end++ = '/';
    const auto length = strnlen(name, NAME_MAX + 1);
    std::memcpy(end, name, length);
    end[length] = 0;
  }

  const char* get() const noexcept { return text_.data(); }

 private:
  static constexpr char kPrefix[] = "/proc/self/fd/";

  char* append(int descriptor) noexcept {
    std::memcpy(text_.data(), kPrefix, sizeof kPrefix);
    char* const start = text_.data() + sizeof kPrefix - 1;
    char* const end = std::to_chars(start, start + 12, descriptor).ptr;
    *end = 0;
    return end;
  }

  std::array<char, sizeof kPrefix + 12 + NAME_MAX + 3> text_;
};

}  // namespace vantrell::host
