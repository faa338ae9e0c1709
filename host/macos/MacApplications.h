// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/Applications.h"

namespace vantrell::host {

/// Launch Services' register of applications, as the user sees it whom this process runs as, and the date that the
/// metadata index has of an item. Volumes that aren't indexed have no dates.
class MacApplications final : public Applications {
 public:
  std::vector<std::string> locationsOfApplicationsWithIdentifier(const std::string& identifier) override;
  std::optional<Date> lastUsedDateOfItemAtPath(const std::string& path) override;
};

}  // namespace vantrell::host
