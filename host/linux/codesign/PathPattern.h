// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <bitset>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vantrell::host::codesign {

/// A rule's regular expression over paths: POSIX extended syntax without counted repetition, back references and named
/// classes of characters, none of which signers use. It comes with the code, so it is matched by following all
/// possibilities side by side: time is at most the product of both lengths, whatever the expression.
class PathPattern {
 public:
  static constexpr std::size_t kMaximumLength = 1024;
  static constexpr std::size_t kMaximumDepth = 32;  // groups within groups

  /// Nothing for a syntax that isn't known, or one over the limits.
  static std::optional<PathPattern> parse(std::string_view expression);

  /// Whether it matches anywhere in `path`. Each step is taken off `steps`; nothing when they run out.
  std::optional<bool> isFoundIn(std::string_view path, std::uint64_t& steps) const;

 private:
  friend class PatternParser;

  enum class Action : std::uint8_t { Take, Split, Jump, AtStart, AtEnd, Found };
  struct Instruction {
    Action action;
    std::int32_t first = 0;   // Take: index into sets_; Split, Jump: distance to the next instruction
    std::int32_t second = 0;  // Split: distance to the other one
  };
  struct Run;

  std::vector<Instruction> program_;
  std::vector<std::bitset<256>> sets_;
};

}  // namespace vantrell::host::codesign
