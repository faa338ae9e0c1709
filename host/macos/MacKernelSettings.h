// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/KernelSettings.h"

namespace vantrell::host {

/// sysctlbyname(3), with values of eight bytes always. To a variable of four the kernel gives the lower half, mostly
/// after a look at whether that is all of the value.
class MacKernelSettings final : public KernelSettings {
 public:
  ErrorOrNil set(std::string_view name, std::int64_t value) override;
};

}  // namespace vantrell::host
