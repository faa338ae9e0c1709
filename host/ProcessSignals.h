// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include "foundation/Error.h"

namespace vantrell::host {

/// Signals to other processes. Safe from any thread.
class ProcessSignals {
 public:
  virtual ~ProcessSignals() = default;

  /// Sends one signal to one process. The signal's number is the host's own; 0 only finds out whether the process could
  /// be signalled. An identifier below 1, which would mean a group of processes or all of them, is POSIX error 22.
  virtual ErrorOrNil send(std::int32_t signal, std::int32_t toProcess) = 0;
};

}  // namespace vantrell::host
