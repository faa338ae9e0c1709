// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <sys/types.h>

#include "foundation/Result.h"

namespace vantrell::host {

/// What a relay can wait for.
struct ChildEvents {
  bool output = false;  // there is something to read, or the end of the stream
  bool error = false;
  bool exit = false;          // the child has exited
  bool interruption = false;  // somebody has interrupted the relay
};

/// One child: its end, its status, signals to it, and waiting for any of what its relay must react to. Each kernel has
/// means of its own. Made before the child, so that the launch itself needs no descriptors beyond those that the
/// child's ends of the pipes set free.
class ChildWatch {
 public:
  virtual ~ChildWatch() = default;

  /// From now on it is `child` that is watched, which nothing else waits for. Called once, before anything else. An
  /// error number, or 0.
  virtual int begin(pid_t child) noexcept = 0;

  /// What of `wanted` has happened: nothing at all after a signal to this process. No value when so many milliseconds
  /// went by without any of it; fewer than none is for ever. `output` and `error` are the reading ends of pipes and the
  /// same in each call. One thread at a time.
  virtual std::optional<ChildEvents> wait(const ChildEvents& wanted, int output, int error,
                                          int milliseconds) noexcept = 0;

  /// Ends every wait for an interruption, those to come as well. From any thread.
  virtual void interrupt() noexcept = 0;

  /// Sends the child a signal unless it was already waited for; another process never gets it. From any thread.
  virtual void send(int signal) noexcept = 0;

  enum class Patience : bool { None, UntilExit };

  /// The child's exit status or the number of the signal that ended it; -1 if somebody else in this process took it.
  /// Nothing while the child runs, without patience. Once it has been told, it isn't to be asked for again.
  virtual std::optional<std::int32_t> takeStatus(Patience patience) noexcept = 0;

  /// Only the status is going to be asked for: what else is held may go.
  virtual void keepStatusOnly() noexcept = 0;
};

/// This kernel's. POSIX errors 23 and 24 when there are no descriptors left.
Result<std::unique_ptr<ChildWatch>> makeChildWatch();

}  // namespace vantrell::host
