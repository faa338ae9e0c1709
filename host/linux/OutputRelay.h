// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "host/ChildProcesses.h"
#include "host/linux/LinuxChildPipes.h"

namespace vantrell::host {

/// Reads a child's output and error side by side and hands them over. See ChildProcess::relayOutputUntilExit for the
/// order of what is handed over. One thread.
class OutputRelay {
 public:
  /// All three must outlive the relay. `process` is a descriptor that becomes readable when the child has exited.
  OutputRelay(const LinuxChildPipes& pipes, int process, const ChildProcess::OutputHandler& handler);

  /// Hands over what comes until the child has exited.
  void relayUntilExit();

  /// Hands over the rest up to the end of both streams; what is there and no more once there is an interruption.
  void relayToEnd();

 private:
  struct Stream {
    ChildStream kind;
    int descriptor;
    bool isAtEnd = false;       // there is nothing more to read
    bool isHandedOver = false;  // and the handler knows

    int watched() const noexcept { return isAtEnd ? -1 : descriptor; }
  };

  /// Returns how many bytes there were, also 0 at the end.
  std::size_t readSome(Stream& stream, std::size_t limit);
  void end(Stream& stream);
  void handOverEnd(Stream& stream);
  void relayWhatIsThere();
  void relayAtMost(Stream& stream, std::size_t count);

  Stream output_;
  Stream error_;
  int interruption_;
  int process_;
  const ChildProcess::OutputHandler& handler_;
  std::unique_ptr<std::uint8_t[]> buffer_;
};

}  // namespace vantrell::host
