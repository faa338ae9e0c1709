// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <memory>

#include "foundation/BlockOperation.h"

namespace vantrell {

/// Runs operations on worker threads, which are made on demand (one for each operation that finds no idle one, up to
/// `maximumWidth`) and end after `idleLifetime` without work. Begins operations in the order added; of the idle
/// threads the one that worked last is taken first. Safe from any thread.
class OperationQueue {
 public:
  /// Far more than a helper ever has under way; the platform's own pools stop at about as many threads.
  static constexpr std::size_t kDefaultMaximumWidth = 512;
  static constexpr unsigned kDefaultIdleLifetimeMilliseconds = 5000;

  /// A width of 0 is taken as 1.
  explicit OperationQueue(std::size_t maximumWidth = kDefaultMaximumWidth,
                          unsigned idleLifetimeMilliseconds = kDefaultIdleLifetimeMilliseconds);
  OperationQueue(const OperationQueue&) = delete;
  OperationQueue& operator=(const OperationQueue&) = delete;
  /// Waits for the operations that were added and for the threads to have done with them. Within one of the queue's
  /// own operations (whose body let go of the queue's last owner, say) it waits for nothing: what was added still runs.
  ~OperationQueue();

  /// `operation` is not null and is added once. Where the system refuses a new thread, the operation waits for one of
  /// the existing threads; when there is none, it runs on the calling thread before this returns.
  void addOperation(std::shared_ptr<BlockOperation> operation);

  /// Not to be called within an operation of this queue, which would wait for itself.
  void waitUntilAllOperationsAreFinished();

  /// For tests and diagnostics: threads that exist now.
  std::size_t threadCount() const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace vantrell
