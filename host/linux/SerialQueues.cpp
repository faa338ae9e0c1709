// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/SerialQueues.h"

#include <exception>
#include <system_error>
#include <utility>

namespace vantrell::host {

SerialQueues::SerialQueues(std::size_t maximumThreads, std::chrono::milliseconds idleLimit)
    : maximumThreads_(maximumThreads), idleLimit_(idleLimit) {}

SerialQueues::~SerialQueues() {
  std::map<std::thread::id, std::thread> running;
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
    running.swap(threads_);
    work_.notify_all();
  }
  for (auto& [identifier, thread] : running) thread.join();
  for (std::thread& thread : ended_) thread.join();
}

void SerialQueues::post(std::string_view key, Task task) {
  std::vector<std::thread> ended;
  {
    std::unique_lock lock(mutex_);
    ended.swap(ended_);
    const auto [queue, isNew] = queues_.try_emplace(std::string(key));
    queue->second.push_back(std::move(task));
    if (isNew) {
      ready_.push_back(queue);
      // A thread that was told of work still counts as idle until it wakes.
      if (idle_ < ready_.size() && threads_.size() < maximumThreads_) startThread();
      work_.notify_one();
      // Where not a single thread can be had, the caller does the work.
      while (threads_.empty() && !ready_.empty()) runNext(lock);
    }
  }
  for (std::thread& thread : ended) thread.join();
}

void SerialQueues::startThread() {
  try {
    std::thread thread([this] { run(); });
    const std::thread::id identifier = thread.get_id();
    threads_.emplace(identifier, std::move(thread));
  } catch (const std::system_error&) {
    // No more threads: those that there are get to it in time.
  }
}

void SerialQueues::run() noexcept {
  std::unique_lock lock(mutex_);
  while (waitForWork(lock)) runNext(lock);
  // Unless the destructor has taken the threads over, the next caller of `post` joins this one.
  const auto self = threads_.find(std::this_thread::get_id());
  if (self == threads_.end()) return;
  ended_.push_back(std::move(self->second));
  threads_.erase(self);
}

bool SerialQueues::waitForWork(std::unique_lock<std::mutex>& lock) {
  ++idle_;
  work_.wait_for(lock, idleLimit_, [this] { return stopping_ || !ready_.empty(); });
  --idle_;
  return !stopping_ && !ready_.empty();
}

void SerialQueues::runNext(std::unique_lock<std::mutex>& lock) {
  const Queues::iterator queue = ready_.front();
  ready_.pop_front();
  {
    Task task = std::move(queue->second.front());
    lock.unlock();
    try {
      task();
    } catch (const std::exception&) {
    }
    // The task goes before the lock is taken again: what it holds may post.
  }
  lock.lock();
  queue->second.pop_front();
  if (queue->second.empty()) {
    queues_.erase(queue);
  } else {
    // Behind the others: no key keeps a thread for itself.
    ready_.push_back(queue);
    if (!stopping_) work_.notify_one();
  }
}

std::size_t SerialQueues::threadCount() const {
  const std::lock_guard lock(mutex_);
  return threads_.size();
}

std::size_t SerialQueues::keyCount() const {
  const std::lock_guard lock(mutex_);
  return queues_.size();
}

}  // namespace vantrell::host
