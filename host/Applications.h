// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/Date.h"

namespace vantrell::host {

/// What the platform keeps in mind about installed software. Nothing here fails: what can't be found out isn't known.
/// Safe from any thread.
class Applications {
 public:
  virtual ~Applications() = default;

  /// Paths of all installed applications with this bundle identifier, upper and lower case of ASCII letters being
  /// equal as the platform has it. None for an empty identifier.
  virtual std::vector<std::string> locationsOfApplicationsWithIdentifier(const std::string& identifier) = 0;

  /// When the item at `path`, links followed, was last opened by a user.
  virtual std::optional<Date> lastUsedDateOfItemAtPath(const std::string& path) = 0;
};

}  // namespace vantrell::host
