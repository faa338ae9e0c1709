// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/OperationQueue.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace vantrell {

// A thread is in one of three conditions:
//
//   coming  -- started or woken for an operation, but not here yet
//   working -- runs operations from the front of `pending` until there are none
//   idle    -- waits on its own condition, on the stack `idle`
//
// Waking takes a thread from the stack at once, so two quick additions never count on the same idle thread. A working
// thread may well take the operation that a coming one was woken for; the coming one then serves the next addition or
// becomes idle. While an operation is pending, at least one thread is coming or working, and neither becomes idle
// before `pending` is empty: no operation is left behind.
struct OperationQueue::State : std::enable_shared_from_this<OperationQueue::State> {
  struct Worker {
    std::condition_variable wake;
    bool woken = false;
  };

  State(std::size_t width, std::chrono::milliseconds lifetime)
      : maximumWidth(std::max<std::size_t>(width, 1)), idleLifetime(lifetime) {}

  const std::size_t maximumWidth;
  const std::chrono::milliseconds idleLifetime;

  std::mutex mutex;  // guards all that follows, Worker::woken included; never held while an operation runs
  std::condition_variable allFinished;
  std::condition_variable allEnded;
  std::deque<std::shared_ptr<BlockOperation>> pending;
  std::vector<std::shared_ptr<Worker>> idle;  // the last one became idle last
  std::vector<std::thread::id> present;       // threads that are working or idle
  std::size_t coming = 0;
  std::size_t threads = 0;
  std::size_t unfinished = 0;
  bool stopping = false;

  void add(std::shared_ptr<BlockOperation> operation);
  void startThread();
  void work();
  void runPending(std::unique_lock<std::mutex>& lock);
  bool waitForWork(std::unique_lock<std::mutex>& lock, const std::shared_ptr<Worker>& self);
  void enter();
  void leave();
  void stop();
};

void OperationQueue::State::add(std::shared_ptr<BlockOperation> operation) {
  std::shared_ptr<Worker> worker;
  {
    const std::lock_guard lock(mutex);
    pending.push_back(std::move(operation));
    ++unfinished;
    if (coming >= pending.size()) return;
    if (!idle.empty()) {
      worker = std::move(idle.back());
      idle.pop_back();
      worker->woken = true;
    } else if (threads < maximumWidth) {
      ++threads;
    } else {
      return;
    }
    ++coming;
  }
  // Without the lock, or the woken thread's first step would be to wait for it.
  if (worker) {
    worker->wake.notify_one();
  } else {
    startThread();
  }
}

// The thread is detached: it owns a share of this state, and `threads` tells when it has gone.
void OperationQueue::State::startThread() {
  try {
    std::thread([state = shared_from_this()] { state->work(); }).detach();
    return;
  } catch (const std::exception&) {
    // No memory or no more threads for this process.
  }
  const auto self = shared_from_this();  // an operation run here may let go of the queue
  std::unique_lock lock(mutex);
  --coming;
  if (threads > 1) {
    // Another thread is here, or another caller is starting one and comes to this point if that fails as well.
    --threads;
    return;
  }
  enter();
  runPending(lock);
  leave();
}

void OperationQueue::State::work() {
  const auto self = std::make_shared<Worker>();
  std::unique_lock lock(mutex);
  enter();
  do {
    --coming;
    runPending(lock);
  } while (waitForWork(lock, self));
  leave();
}

void OperationQueue::State::runPending(std::unique_lock<std::mutex>& lock) {
  while (!pending.empty()) {
    std::shared_ptr<BlockOperation> operation = std::move(pending.front());
    pending.pop_front();
    lock.unlock();
    operation->run();
    operation.reset();
    lock.lock();
    if (--unfinished == 0) allFinished.notify_all();
  }
}

// True when there may be work, false when this thread is to end.
bool OperationQueue::State::waitForWork(std::unique_lock<std::mutex>& lock, const std::shared_ptr<Worker>& self) {
  self->woken = false;
  idle.push_back(self);
  if (self->wake.wait_for(lock, idleLifetime, [&] { return self->woken || stopping; }) && self->woken) return true;
  std::erase(idle, self);
  return false;
}

void OperationQueue::State::enter() {
  present.push_back(std::this_thread::get_id());
}

void OperationQueue::State::leave() {
  std::erase(present, std::this_thread::get_id());
  if (--threads == 0) allEnded.notify_all();
}

// With the lock held.
void OperationQueue::State::stop() {
  stopping = true;
  for (const auto& worker : idle) worker->wake.notify_one();
}

OperationQueue::OperationQueue(std::size_t maximumWidth, unsigned idleLifetimeMilliseconds)
    : state_(std::make_shared<State>(maximumWidth, std::chrono::milliseconds(idleLifetimeMilliseconds))) {}

OperationQueue::~OperationQueue() {
  std::unique_lock lock(state_->mutex);
  if (std::ranges::find(state_->present, std::this_thread::get_id()) != state_->present.end()) {
    state_->stop();
    return;
  }
  state_->allFinished.wait(lock, [this] { return state_->unfinished == 0; });
  state_->stop();
  state_->allEnded.wait(lock, [this] { return state_->threads == 0; });
}

void OperationQueue::addOperation(std::shared_ptr<BlockOperation> operation) {
  state_->add(std::move(operation));
}

void OperationQueue::waitUntilAllOperationsAreFinished() {
  std::unique_lock lock(state_->mutex);
  state_->allFinished.wait(lock, [this] { return state_->unfinished == 0; });
}

std::size_t OperationQueue::threadCount() const {
  const std::lock_guard lock(state_->mutex);
  return state_->threads;
}

}  // namespace vantrell
