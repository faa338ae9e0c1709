// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/Mounts.h"

namespace vantrell::host {

/// statfs(2).
class MacMounts final : public Mounts {
 public:
  Result<std::string> mountPointNameForPath(const std::string& path) override;
};

}  // namespace vantrell::host
