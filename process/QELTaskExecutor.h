// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "host/ChildProcesses.h"
#include "host/FileSystem.h"
#include "process/QELTaskExecutorDelegate.h"

namespace vantrell {

class ExecutorState;

/// Runs one external program as a child process and relays all that it writes to a delegate as it comes; without a
/// delegate, to this process's own streams. An executor serves one run, since an interruption is never forgotten.
///
/// Safe from any thread. May be let go of at any time, in a completion handler as well: a run that is under way goes on
/// to its end and its completion handler is called. The child processes and the log must outlive the run.
class QELTaskExecutor {
 public:
  using Arguments = std::optional<std::vector<std::string>>;

  /// Whether the program was interrupted, and its exit status or the number of the signal that ended it.
  using CompletionHandler = std::function<void(bool interrupted, std::int32_t status)>;

  QELTaskExecutor(host::ChildProcesses& childProcesses, Log log);
  QELTaskExecutor(const QELTaskExecutor&) = delete;
  QELTaskExecutor& operator=(const QELTaskExecutor&) = delete;
  ~QELTaskExecutor();

  /// The delegate is not kept alive.
  void setDelegate(std::weak_ptr<QELTaskExecutorDelegate> delegate);
  std::shared_ptr<QELTaskExecutorDelegate> delegate() const;

  /// Whether root may run the program: with all links resolved it is no folder, and both it and the folder it lies in
  /// belong to user 0 and group 0 and give nobody else leave to write.
  static bool hasExecutableSafePermissionsAtPath(const std::string& path, FileManager& fileManager,
                                                 host::FileSystem& fileSystem);

  /// Runs the program to its end; this form can't be interrupted. Returns the exit status or the number of the signal
  /// that ended it; -1 for an empty path or missing arguments, and when there are no descriptors left. Raises
  /// NSInvalidArgumentException when the program can't be executed.
  std::int32_t executeProgramAtPath(const std::string& path, const Arguments& arguments);

  /// Starts the program; false when the path is empty, the arguments are missing, another run is under way, or there
  /// are no descriptors left. The handler is called once, on a thread of the run's own, when the program has ended and
  /// all of its output was relayed; the executor takes a new run by then. Raises NSInvalidArgumentException when the
  /// program can't be executed. After a failure for want of descriptors or in executing the program, the run counts as
  /// under way for good.
  bool executeProgramAtPath(const std::string& path, const Arguments& arguments, CompletionHandler completionHandler);

  /// True while a run of the second form is under way.
  bool canInterruptProgram() const;

  /// Sends the program a termination request (SIGTERM) or an interrupt (SIGINT). Does nothing when there is none to
  /// interrupt. One that is just being launched gets the signal after that. One that has exited, while others
  /// still hold its output open, gets none and counts as not interrupted, but its output is no longer waited for.
  void interruptProgramUsingTerminationRequest(bool useTerminationRequest);

  /// Whether an interruption was ever asked for while there was a program to interrupt.
  bool hasInterrupted() const;

 private:
  std::shared_ptr<ExecutorState> state_;  // shared with the thread of a run
};

}  // namespace vantrell
