// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <mutex>

namespace vantrell {

/// One piece of work with a completion. A cancelled operation that has not begun skips its body; its completion runs
/// all the same. Cancelling never stops a running body: the body asks isCancelled(), or an observer acts.
class BlockOperation {
 public:
  using Block = std::move_only_function<void()>;
  using ObserverToken = std::uint64_t;

  explicit BlockOperation(Block body);
  BlockOperation(const BlockOperation&) = delete;
  BlockOperation& operator=(const BlockOperation&) = delete;
  ~BlockOperation();

  /// Runs once, on the worker, after the body (or in its place). Set before the operation is added to a queue.
  void setCompletionBlock(Block completion);

  /// May be called from any thread, any number of times; only the first time counts.
  void cancel();
  bool isCancelled() const noexcept { return cancelled_.load(std::memory_order_acquire); }

  /// `observer` is called once, on the thread that cancels; at once, on this thread, when that has happened already.
  ObserverToken addCancellationObserver(std::function<void()> observer);
  /// After this returns the observer is not running and will not run. Not to be called from within the observer.
  void removeCancellationObserver(ObserverToken token);

  /// The worker's part: body unless cancelled, then completion. Called once. Exceptions of the body end the process;
  /// bodies catch their own.
  void run() noexcept;

 private:
  struct Observer {
    ObserverToken token;
    std::function<void()> call;
  };
  std::atomic<bool> cancelled_ = false;
  Block body_;
  Block completion_;
  std::mutex observersLock_;  // also held while observers run
  ObserverToken nextToken_ = 1;
  std::list<Observer> observers_;
};

/// Runs operations on worker threads, which are made on demand (one for each operation that finds no idle one, up to
/// `maximumWidth`) and end after `idleLifetime` without work. Begins operations in the order added.
class OperationQueue {
 public:
  /// Far more than a helper ever has under way; the platform's own pools stop at about as many threads.
  static constexpr std::size_t kDefaultMaximumWidth = 512;
  static constexpr unsigned kDefaultIdleLifetimeMilliseconds = 5000;

  explicit OperationQueue(std::size_t maximumWidth = kDefaultMaximumWidth,
                          unsigned idleLifetimeMilliseconds = kDefaultIdleLifetimeMilliseconds);
  OperationQueue(const OperationQueue&) = delete;
  OperationQueue& operator=(const OperationQueue&) = delete;
  /// Waits for the operations that were added.
  ~OperationQueue();

  void addOperation(std::shared_ptr<BlockOperation> operation);
  void waitUntilAllOperationsAreFinished();

  /// For tests and diagnostics: threads that exist now.
  std::size_t threadCount() const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace vantrell
