// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>

#include "foundation/UniqueFunction.h"

namespace vantrell {

/// One piece of work with a completion. A cancelled operation that has not begun skips its body; its completion runs
/// all the same. Cancelling never stops a running body: the body asks isCancelled(), or an observer acts.
class BlockOperation {
 public:
  using Block = UniqueFunction<void()>;
  using ObserverToken = std::uint64_t;

  explicit BlockOperation(Block body);
  BlockOperation(const BlockOperation&) = delete;
  BlockOperation& operator=(const BlockOperation&) = delete;
  ~BlockOperation();

  /// Runs once, on the worker, after the body (or in its place). Set before the operation is added to a queue.
  void setCompletionBlock(Block completion);

  /// May be called from any thread, any number of times; only the first time counts. A later call does not wait for
  /// the observers that the first one is calling.
  void cancel();
  bool isCancelled() const noexcept { return cancelled_.load(std::memory_order_acquire); }

  /// `observer` is called once, on the thread that cancels; at once, on this thread, when that has happened already.
  /// It may call cancel() and isCancelled(), but must not add or remove observers of this operation, nor throw.
  ObserverToken addCancellationObserver(std::function<void()> observer);
  /// After this returns the observer is not running and will not run. Waits for running observers, so the caller must
  /// hold no lock that one of them takes.
  void removeCancellationObserver(ObserverToken token);

  /// The worker's part: body unless cancelled, then completion. Called once. Each of the two is destroyed as soon as
  /// it has run (the body also when it was skipped), so what they own may in turn own this operation. Exceptions of
  /// the body end the process; bodies catch their own.
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

}  // namespace vantrell
