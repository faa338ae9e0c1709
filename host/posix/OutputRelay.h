// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "host/ChildProcesses.h"
#include "host/posix/PosixChildPipes.h"

namespace vantrell::host {

/// Reads a child's output and error side by side and hands them over. See ChildProcess::relayOutputUntilExit for the
/// order of what is handed over. One thread.
class OutputRelay {
 public:
  /// Both must outlive the relay.
  OutputRelay(const PosixChildPipes& pipes, const ChildProcess::OutputHandler& handler);

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
  };

  /// Waits for `others` and for whatever of the streams has not ended; reads what has come. What of the others has
  /// happened; no value when the time is over.
  std::optional<ChildEvents> readWhatComes(ChildEvents others, int milliseconds);
  /// Returns how many bytes there were, also 0 at the end.
  std::size_t readSome(Stream& stream, std::size_t limit);
  void end(Stream& stream);
  void handOverEnd(Stream& stream);
  void relayWhatIsThere();
  void relayAtMost(Stream& stream, std::size_t count);

  Stream output_;
  Stream error_;
  ChildWatch& watch_;
  const ChildProcess::OutputHandler& handler_;
  std::unique_ptr<std::uint8_t[]> buffer_;
};

}  // namespace vantrell::host
