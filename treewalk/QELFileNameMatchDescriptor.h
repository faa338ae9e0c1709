// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace vantrell {

/// One rule for names (last path components). Names and texts are compared as bytes, case-sensitively.
struct QELFileNameMatchDescriptor {
  enum MatchType : std::int8_t { Equals = 0, BeginsWith = 1, HasExtension = 2 };

  std::int8_t matchType = Equals;
  std::string matchString;

  bool matches(std::string_view name) const noexcept;
};

/// True when one of the rules does.
bool anyMatches(std::span<const QELFileNameMatchDescriptor> descriptors, std::string_view name) noexcept;

}  // namespace vantrell
