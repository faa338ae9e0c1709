// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include "host/SystemLog.h"

namespace vantrell::host {

/// The unified log; every message is public. The platform keeps what a subsystem and category need for ever, so that
/// only the first kMaximumHandles pairs have their own: messages of all others go to the default log. What exceeds the
/// platform's measure for one entry (about 1 KB) is cut by it. Text that is not UTF-8 has replacement characters, and
/// U+FFFD stands for a zero character.
class MacSystemLog final : public SystemLog {
 public:
  static constexpr std::size_t kMaximumHandles = 64;

  MacSystemLog();
  ~MacSystemLog() override;

  /// The platform decides which levels it keeps.
  bool isRecording() const noexcept override { return true; }
  void write(std::string_view subsystem, std::string_view category, LogLevel level,
             std::string_view message) noexcept override;

 private:
  class Handles;
  std::unique_ptr<Handles> handles_;
};

}  // namespace vantrell::host
