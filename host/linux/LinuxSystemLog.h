// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include "host/SystemLog.h"

namespace vantrell::host {

/// The journal where one runs, else the daemon behind /dev/log, else nowhere. Never standard error.
std::unique_ptr<SystemLog> makeSystemLog();

/// The name under which this program's entries stand.
inline constexpr char kLogIdentifier[] = "Vantrell-PrivilegedTool";

/// The priority of syslog(3) for a level: default 5, info 6, error 3, fault 2.
constexpr int syslogPriority(LogLevel level) noexcept {
  switch (level) {
    case LogLevel::Info:
      return 6;
    case LogLevel::Error:
      return 3;
    case LogLevel::Fault:
      return 2;
    case LogLevel::Default:
      break;
  }
  return 5;
}

}  // namespace vantrell::host
