// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/SystemLog.h"

namespace vantrell::host {

/// Entries go to the daemon behind /dev/log as "[subsystem:category] message". Control characters become "#ooo"
/// (octal), so that no message can pass for two entries. Uses the process's one connection of syslog(3).
class SyslogLog final : public SystemLog {
 public:
  SyslogLog();
  ~SyslogLog() override;
  SyslogLog(const SyslogLog&) = delete;
  SyslogLog& operator=(const SyslogLog&) = delete;

  bool isRecording() const noexcept override { return true; }
  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view message) noexcept override;
};

}  // namespace vantrell::host
