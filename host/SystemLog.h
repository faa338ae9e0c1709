// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string_view>

namespace vantrell::host {

enum class LogLevel : std::uint8_t { Default, Info, Error, Fault };

/// What a log makes of a message that was written like a line.
constexpr std::string_view withoutFinalNewline(std::string_view message) noexcept {
  if (message.ends_with('\n')) message.remove_suffix(1);
  return message;
}

/// The operating system's log. Writing never fails visibly, never blocks for long and is safe from any thread.
class SystemLog {
 public:
  virtual ~SystemLog() = default;

  /// False when messages go nowhere; callers may then spare themselves the formatting.
  virtual bool isRecording() const noexcept = 0;

  /// `subsystem` and `category` may be empty (the default log). `message` is one entry; a newline at its end is cut.
  virtual void write(std::string_view subsystem, std::string_view category, LogLevel level,
                     std::string_view message) noexcept = 0;
};

}  // namespace vantrell::host
