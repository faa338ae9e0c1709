// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/ExecutableDescriptor.h"

namespace vantrell::host {

/// This host's own format is the Mach-O format: there is no other.
class MacExecutableDescriptor final : public ExecutableDescriptor {
 public:
  Result<std::vector<std::string>> descriptorsForFileAtPath(std::string_view path) override;
};

}  // namespace vantrell::host
