// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/posix/PosixCurrentProcess.h"

namespace vantrell::host {

class MacCurrentProcess final : public PosixCurrentProcess {
 public:
  /// The main run loop, which also serves the main dispatch queue for the frameworks' sake.
  void runMainLoop() override;
};

}  // namespace vantrell::host
