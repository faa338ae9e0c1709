// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <iosfwd>
#include <mutex>

#include "host/SystemLog.h"

namespace vantrell {

/// A log that is read at once: every message is a line of a stream.
class StreamLog final : public host::SystemLog {
 public:
  /// `out` must outlive the log. `escape`: the stream leads to a terminal.
  StreamLog(std::ostream& out, bool escape) : out_(out), escape_(escape) {}

  bool isRecording() const noexcept override { return true; }
  void write(std::string_view subsystem, std::string_view category, host::LogLevel level,
             std::string_view message) noexcept override;

 private:
  std::ostream& out_;
  const bool escape_;
  std::mutex lock_;
};

}  // namespace vantrell
