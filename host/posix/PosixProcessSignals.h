// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/ProcessSignals.h"

namespace vantrell::host {

/// kill(2).
class PosixProcessSignals final : public ProcessSignals {
 public:
  ErrorOrNil send(std::int32_t signal, std::int32_t toProcess) override;
};

}  // namespace vantrell::host
