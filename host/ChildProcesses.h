// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"

namespace vantrell::host {

enum class ChildStream : std::uint8_t { Output, Error };

enum class ChildSignal : std::uint8_t { Interrupt, Terminate };  // SIGINT, SIGTERM

/// The pipes of a child yet to be launched: made first, since running out of descriptors is told apart from a launch
/// that fails. Every end is closed on exec.
class ChildPipes {
 public:
  virtual ~ChildPipes() = default;
};

/// A child process with its standard streams on pipes. Nothing is ever written to its standard input, which stays open
/// until this object goes. Let go of, it closes this side of the pipes; the child is not ended, but it is still waited
/// for, so that no zombie stays.
class ChildProcess {
 public:
  virtual ~ChildProcess() = default;

  /// Receives bytes as they are read; the view is valid during the call only. An empty one stands for the end of the
  /// stream, which comes once for each and is its last; output's before error's when the child's end ends both.
  using OutputHandler = std::function<void(ChildStream, DataView)>;

  /// Receives the exit status once, when the child has exited and before what is left in the pipes is handed over.
  using ExitHandler = std::function<void(std::int32_t status)>;

  /// Hands over output as it arrives until the child has exited, and then what is left in the pipes up to their end;
  /// after an interruption up to what is there at that moment, so that a process which inherited a pipe can't hold this
  /// up. Both streams are read whichever the child fills. While a handler runs nothing is read, and a child that goes
  /// on writing waits. Called once, on a thread of the caller's; the handlers run on it and must not throw. Returns the
  /// exit status, or the number of the signal that ended the child; -1 if somebody else in this process took the
  /// status.
  virtual std::int32_t relayOutputUntilExit(const OutputHandler& outputHandler,
                                            const ExitHandler& exitHandler = nullptr) = 0;

  /// Sends a signal to this very child and counts as the interruption of the relay; a child that has exited gets none.
  /// From any thread, also during the relay.
  virtual void sendSignal(ChildSignal signal) = 0;

  virtual std::int32_t identifier() const noexcept = 0;
};

/// While one exists, this process's file-creation mask is 0.
class OpenFileCreationMask {
 public:
  virtual ~OpenFileCreationMask() = default;
};

/// Starts programs, and keeps the environment that they inherit. Safe from any thread.
class ChildProcesses {
 public:
  virtual ~ChildProcesses() = default;

  /// POSIX errors 23 and 24 when there are no descriptors left.
  virtual Result<std::unique_ptr<ChildPipes>> makePipes() = 0;

  /// Starts the program at `path`, never through a shell or the search path, with `arguments` behind its own path. The
  /// child has this process's environment, default signal handling, nothing blocked, and no descriptor but its standard
  /// streams. Fails with the system's error when the program can't be executed, with POSIX error 22 for a zero byte in
  /// the path or an argument.
  virtual Result<std::unique_ptr<ChildProcess>> launch(const std::string& path,
                                                       const std::vector<std::string>& arguments,
                                                       std::unique_ptr<ChildPipes> pipes) = 0;

  /// Sets or removes PATH for this process and all children launched later. Under the one lock that also guards the
  /// building of a child's environment.
  virtual void setSearchPath(const std::optional<std::string>& path) = 0;
  virtual std::optional<std::string> searchPath() = 0;

  /// Masks nothing in the creation of files from now until the last of these objects has gone; the mask that was is
  /// then restored, and children launched meanwhile have it all the same.
  virtual std::unique_ptr<OpenFileCreationMask> openFileCreationMask() = 0;

  /// Writes to this process's own standard output or error; failures are ignored.
  virtual void writeToOwnStream(ChildStream stream, DataView bytes) noexcept = 0;
};

}  // namespace vantrell::host
