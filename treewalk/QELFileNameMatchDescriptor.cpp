// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/QELFileNameMatchDescriptor.h"

#include <algorithm>

#include "foundation/PathUtilities.h"

namespace vantrell {

bool QELFileNameMatchDescriptor::matches(std::string_view name) const noexcept {
  switch (matchType) {
    case Equals:
      return name == matchString;
    case BeginsWith:
      return name.starts_with(matchString);
    case HasExtension:
      return pathExtension(name) == matchString;
    default:
      return false;
  }
}

bool anyMatches(std::span<const QELFileNameMatchDescriptor> descriptors, std::string_view name) noexcept {
  return std::ranges::any_of(descriptors, [name](const auto& descriptor) { return descriptor.matches(name); });
}

}  // namespace vantrell
