// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacSystemLog.h"

#include <cerrno>
#include <mutex>
#include <string>
#include <vector>

#import <os/log.h>

#include "foundation/PathUtilities.h"

namespace vantrell::host {
namespace {

os_log_type_t typeOf(LogLevel level) {
  switch (level) {
    case LogLevel::Info:
      return OS_LOG_TYPE_INFO;
    case LogLevel::Error:
      return OS_LOG_TYPE_ERROR;
    case LogLevel::Fault:
      return OS_LOG_TYPE_FAULT;
    case LogLevel::Default:
      break;
  }
  return OS_LOG_TYPE_DEFAULT;
}

std::string printable(std::string_view message) {
  std::string text;
  for (std::size_t zero = message.find('\0'); zero != message.npos; zero = message.find('\0')) {
    text.append(message.substr(0, zero)).append("\uFFFD");
    message.remove_prefix(zero + 1);
  }
  return displayablePath(text.append(message));
}

}  // namespace

/// A log object for each pair of subsystem and category met so far. Safe from any thread.
class MacSystemLog::Handles {
 public:
  os_log_t handleFor(std::string_view subsystem, std::string_view category) {
    if (subsystem.empty() && category.empty()) return OS_LOG_DEFAULT;
    const std::lock_guard lock(mutex_);
    for (const auto& handle : handles_) {
      if (handle.subsystem == subsystem && handle.category == category) return handle.log;
    }
    if (handles_.size() == kMaximumHandles) return OS_LOG_DEFAULT;
    Handle handle{std::string(subsystem), std::string(category), nil};
    handle.log = os_log_create(handle.subsystem.c_str(), handle.category.c_str());
    return handles_.emplace_back(std::move(handle)).log;
  }

 private:
  struct Handle {
    std::string subsystem;
    std::string category;
    os_log_t log;
  };

  std::mutex mutex_;  // guards handles_
  std::vector<Handle> handles_;
};

MacSystemLog::MacSystemLog() : handles_(std::make_unique<Handles>()) {}
MacSystemLog::~MacSystemLog() = default;

void MacSystemLog::write(std::string_view subsystem, std::string_view category, LogLevel level,
                         std::string_view message) noexcept try {
  const int callersErrno = errno;
  @autoreleasepool {
    const std::string text = printable(withoutFinalNewline(message));
    os_log_with_type(handles_->handleFor(subsystem, category), typeOf(level), "%{public}s", text.c_str());
  }
  errno = callersErrno;
} catch (...) {
  // No memory for the entry: it is lost.
}

}  // namespace vantrell::host
