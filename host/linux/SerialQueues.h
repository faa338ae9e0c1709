// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "foundation/UniqueFunction.h"

namespace vantrell::host {

/// Runs tasks: those of one key one after the other, in order; those of different keys at the same time, on threads
/// that are made when they are needed and end when they have been idle. A key costs nothing once its tasks are done.
class SerialQueues {
 public:
  using Task = UniqueFunction<void()>;

  explicit SerialQueues(std::size_t maximumThreads = 64,
                        std::chrono::milliseconds idleLimit = std::chrono::seconds(10));
  /// Waits for the tasks that run and drops the others. Not from a task.
  ~SerialQueues();
  SerialQueues(const SerialQueues&) = delete;
  SerialQueues& operator=(const SerialQueues&) = delete;

  /// From any thread. An exception that leaves the task ends the task only.
  void post(std::string_view key, Task task);

  std::size_t threadCount() const;
  /// How many keys have tasks.
  std::size_t keyCount() const;

 private:
  using Queues = std::map<std::string, std::deque<Task>, std::less<>>;

  void startThread();
  void run() noexcept;
  bool waitForWork(std::unique_lock<std::mutex>& lock);
  void runNext(std::unique_lock<std::mutex>& lock);

  const std::size_t maximumThreads_;
  const std::chrono::milliseconds idleLimit_;

  mutable std::mutex mutex_;
  std::condition_variable work_;
  Queues queues_;                       // a queue stays as long as it has tasks, the running one included
  std::deque<Queues::iterator> ready_;  // queues with tasks of which none runs
  std::map<std::thread::id, std::thread> threads_;
  std::vector<std::thread> ended_;
  std::size_t idle_ = 0;
  bool stopping_ = false;
};

}  // namespace vantrell::host
