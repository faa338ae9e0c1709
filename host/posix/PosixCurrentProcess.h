// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/CurrentProcess.h"

namespace vantrell::host {

class PosixCurrentProcess : public CurrentProcess {
 public:
  std::int32_t identifier() const noexcept override;
  std::uint32_t realUserID() const noexcept override;
  std::uint32_t effectiveUserID() const noexcept override;
  void exit(int status) override;
  void runMainLoop() override;
  void sleepForMilliseconds(unsigned milliseconds) override;
};

}  // namespace vantrell::host
