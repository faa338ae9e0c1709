// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/SystemLog.h"

namespace vantrell::host {

/// Entries go to journald as fields: MESSAGE, PRIORITY, SYSLOG_IDENTIFIER, and SUBSYSTEM and CATEGORY where given.
/// The journal keeps messages of several lines as they are.
class JournalLog final : public SystemLog {
 public:
  bool isRecording() const noexcept override { return true; }
  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view message) noexcept override;
};

}  // namespace vantrell::host
