// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "foundation/Error.h"
#include "foundation/UniqueFunction.h"

namespace vantrell {

/// A second thread that takes subtrees over from a walk:
///
///   walking thread --handOver--> queue (bounded) --> second thread
///                  <--finish, finishAll take back what has not been begun--
///
/// Tasks have the order in which they were handed over. After a failure those behind it are dropped or told to end,
/// those before it are completed, so that the failure that counts is the first one in that order. The thread is started
/// with the first task. All functions but those of tasks belong to the walking thread.
class TreeWalkTeam {
 public:
  /// Asked now and then by a task, on whichever thread it runs; once true, what it returns no longer counts.
  using ShouldEnd = std::function<bool()>;
  using Task = UniqueFunction<ErrorOrNil(const ShouldEnd&)>;

  /// The tasks that belong to one folder.
  class Group {
    friend TreeWalkTeam;
    std::size_t unfinished_ = 0;
  };

  TreeWalkTeam() = default;
  TreeWalkTeam(const TreeWalkTeam&) = delete;
  TreeWalkTeam& operator=(const TreeWalkTeam&) = delete;
  ~TreeWalkTeam();

  /// Whether handOver would take a task. False for good where there is no second processor or thread.
  bool hasRoom();
  void handOver(std::shared_ptr<Group> group, Task task);

  /// Returns when the group's tasks are done, helping with what has not been begun.
  void finish(Group& group);

  /// The same for all tasks; false when there were none. Their handles are closed then.
  bool finishAny();

  /// The same at the end of the walk. The failure that counts: that of a task, or else the walking thread's own.
  ErrorOrNil finishAll(const ErrorOrNil& own);

  bool hasFailed() const noexcept { return firstFailure_.load(std::memory_order_relaxed) != kNone; }

 private:
  struct Entry {
    std::uint64_t number = 0;
    std::shared_ptr<Group> group;
    Task task;
  };

  static constexpr std::size_t kCapacity = 8;
  static constexpr std::uint64_t kNone = ~std::uint64_t{0};

  void work();
  void run(std::unique_lock<std::mutex>& lock);
  ErrorOrNil perform(Entry& entry) const;

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Entry> queue_;
  std::size_t unfinished_ = 0;
  std::uint64_t lastNumber_ = 0;
  std::atomic<std::uint64_t> firstFailure_ = kNone;  // number of the task that failed
  ErrorOrNil failure_;
  std::optional<bool> hasThread_;
  bool isEnding_ = false;
  std::thread thread_;
};

}  // namespace vantrell
