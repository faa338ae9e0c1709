// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/BlockOperation.h"

#include <algorithm>
#include <utility>

namespace vantrell {

BlockOperation::BlockOperation(Block body) : body_(std::move(body)) {}
BlockOperation::~BlockOperation() = default;

void BlockOperation::setCompletionBlock(Block completion) {
  completion_ = std::move(completion);
}

void BlockOperation::cancel() {
  if (cancelled_.exchange(true, std::memory_order_acq_rel)) return;
  std::list<Observer> called;  // destroyed after the lock is released: what observers own may do anything
  const std::lock_guard lock(observersLock_);
  for (const Observer& observer : observers_) observer.call();
  called.swap(observers_);
}

BlockOperation::ObserverToken BlockOperation::addCancellationObserver(std::function<void()> observer) {
  std::unique_lock lock(observersLock_);
  const ObserverToken token = nextToken_++;
  // cancel() sets the flag before it takes the lock: an observer is either in the list by then or is called here.
  if (!isCancelled()) {
    observers_.push_back({token, std::move(observer)});
    return token;
  }
  lock.unlock();
  observer();
  return token;
}

void BlockOperation::removeCancellationObserver(ObserverToken token) {
  std::list<Observer> removed;  // destroyed after the lock is released
  const std::lock_guard lock(observersLock_);
  const auto it = std::ranges::find(observers_, token, &Observer::token);
  if (it != observers_.end()) removed.splice(removed.end(), observers_, it);
}

void BlockOperation::run() noexcept {
  {
    Block body = std::exchange(body_, nullptr);
    if (body && !isCancelled()) body();
  }
  if (Block completion = std::exchange(completion_, nullptr)) completion();
}

}  // namespace vantrell
