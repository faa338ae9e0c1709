// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>
#include <utility>

#include <fmt/core.h>

#include "host/SystemLog.h"

namespace vantrell {

/// A handle to the system log under one subsystem and category. Copyable; the system log must outlive it.
class Log {
 public:
  /// The default log, without subsystem and category.
  explicit Log(host::SystemLog& systemLog) : systemLog_(&systemLog) {}
  Log(host::SystemLog& systemLog, std::string subsystem, std::string category)
      : systemLog_(&systemLog), subsystem_(std::move(subsystem)), category_(std::move(category)) {}

  template <class... T>
  void write(host::LogLevel level, fmt::format_string<T...> format, T&&... values) const {
    if (!systemLog_->isRecording()) return;
    systemLog_->write(subsystem_, category_, level, fmt::vformat(format, fmt::make_format_args(values...)));
  }
  template <class... T>
  void notice(fmt::format_string<T...> format, T&&... values) const {
    write(host::LogLevel::Default, format, std::forward<T>(values)...);
  }
  template <class... T>
  void info(fmt::format_string<T...> format, T&&... values) const {
    write(host::LogLevel::Info, format, std::forward<T>(values)...);
  }
  template <class... T>
  void error(fmt::format_string<T...> format, T&&... values) const {
    write(host::LogLevel::Error, format, std::forward<T>(values)...);
  }
  template <class... T>
  void fault(fmt::format_string<T...> format, T&&... values) const {
    write(host::LogLevel::Fault, format, std::forward<T>(values)...);
  }

 private:
  host::SystemLog* systemLog_;
  std::string subsystem_;
  std::string category_;
};

}  // namespace vantrell
