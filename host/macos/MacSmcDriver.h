// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/SmcDriver.h"

namespace vantrell::host {

/// The controller through the kernel's driver "AppleSMC". Return codes and results are the driver's own.
class MacSmcDriver final : public SmcDriver {
 public:
  std::expected<std::unique_ptr<SmcConnection>, SmcReturnCode> connect() override;
};

}  // namespace vantrell::host
