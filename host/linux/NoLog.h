// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/SystemLog.h"

namespace vantrell::host {

/// The log of a system that has none.
class NoLog final : public SystemLog {
 public:
  bool isRecording() const noexcept override { return false; }
  void write(std::string_view, std::string_view, LogLevel, std::string_view) noexcept override {}
};

}  // namespace vantrell::host
