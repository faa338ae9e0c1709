// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/Terminal.h"

namespace vantrell::host {

class PosixTerminal final : public Terminal {
 public:
  bool isTerminal(StandardStream stream) const override;
  std::optional<unsigned> columns(StandardStream stream) const override;
};

}  // namespace vantrell::host
