// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

namespace vantrell::host::codesign {

/// What the check of one piece of code may cost, nested code included. Each limit is one that no real installer or
/// application comes near.
struct CheckingBudget {
  std::uint64_t objects = 2'000'000;                    // files, links and folders looked at
  std::uint64_t bytes = std::uint64_t{128} << 30;       // of resources that are hashed
  std::uint64_t patternSteps = std::uint64_t{1} << 32;  // see PathPattern
  std::uint64_t nestedCode = 4'000;

  static constexpr std::size_t kMaximumFolderDepth = 64;  // below a sealed folder
  static constexpr std::size_t kMaximumCodeDepth = 16;    // code in code

  /// Takes one share and is false when nothing is left.
  static bool take(std::uint64_t& left, std::uint64_t share = 1) noexcept {
    if (left < share) return false;
    left -= share;
    return true;
  }
};

}  // namespace vantrell::host::codesign
