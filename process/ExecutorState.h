// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Log.h"
#include "host/ChildProcesses.h"
#include "process/QELTaskExecutor.h"
#include "process/QELTaskExecutorDelegate.h"

namespace vantrell {

/// What an executor shares with the thread of its run, which may outlive it. Safe from any thread.
class ExecutorState {
 public:
  ExecutorState(host::ChildProcesses& childProcesses, Log log)
      : childProcesses_(childProcesses), log_(std::move(log)) {}

  host::ChildProcesses& childProcesses() noexcept { return childProcesses_; }
  const Log& log() const noexcept { return log_; }

  void setDelegate(std::weak_ptr<QELTaskExecutorDelegate> delegate);
  std::shared_ptr<QELTaskExecutorDelegate> delegate() const;

  /// From here on a run is under way; false when one is already.
  bool beginRun();
  bool isRunning() const;
  bool hasInterrupted() const;
  void interrupt(host::ChildSignal signal);

  /// Raises NSInvalidArgumentException.
  std::unique_ptr<host::ChildProcess> launch(const std::string& path, const std::vector<std::string>& arguments,
                                             std::unique_ptr<host::ChildPipes> pipes);
  /// The child of the run that is under way.
  void setChild(std::unique_ptr<host::ChildProcess> child);

  /// Relays the output of the run's child to its end, ends the run and calls the handler, after which nothing that the
  /// executor was given is touched any more.
  void finishRun(const QELTaskExecutor::CompletionHandler& completionHandler);

  /// Passes output on to the delegate; never throws.
  void receive(host::ChildStream stream, DataView bytes);

 private:
  void passOn(host::ChildStream stream, DataView bytes);
  void logException(const std::string& name, const std::string& reason) const;

  host::ChildProcesses& childProcesses_;
  const Log log_;
  mutable std::mutex mutex_;  // guards what follows
  std::weak_ptr<QELTaskExecutorDelegate> delegate_;
  bool isRunning_ = false;
  bool hasInterrupted_ = false;
  std::optional<host::ChildSignal> signalForLaunch_;  // asked for before there was a child
  std::unique_ptr<host::ChildProcess> child_;         // set and let go of by the run only
};

}  // namespace vantrell
