// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/StreamLog.h"

#include <exception>
#include <ostream>

#include "client/TerminalText.h"

namespace vantrell {

void StreamLog::write(std::string_view, std::string_view, host::LogLevel, std::string_view message) noexcept {
  if (message.ends_with('\n')) message.remove_suffix(1);  // as the system's logs do
  try {
    const std::lock_guard guard(lock_);
    if (escape_) {
      out_ << terminalSafe(message) << std::endl;
    } else {
      out_ << message << std::endl;
    }
  } catch (const std::exception&) {
    // A log entry is lost for want of memory.
  }
}

}  // namespace vantrell
