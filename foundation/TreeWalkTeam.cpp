// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/TreeWalkTeam.h"

#include <exception>
#include <system_error>
#include <utility>

#include "foundation/PosixCodes.h"

namespace vantrell {

TreeWalkTeam::~TreeWalkTeam() {
  if (!thread_.joinable()) return;
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

bool TreeWalkTeam::hasRoom() {
  if (!hasThread_) {
    hasThread_ = false;
    try {
      if (std::thread::hardware_concurrency() > 1) {
        thread_ = std::thread([this] { work(); });
        hasThread_ = true;
      }
    } catch (const std::system_error&) {
      // No thread can be had at the moment: the walk goes on alone.
    }
  }
  if (!*hasThread_ || hasFailed()) return false;
  const std::lock_guard lock(mutex_);
  return queue_.size() < kCapacity;
}

void TreeWalkTeam::handOver(std::shared_ptr<Group> group, Task task) {
  {
    const std::lock_guard lock(mutex_);
    ++group->unfinished_;
    ++unfinished_;
    queue_.push_back({++lastNumber_, std::move(group), std::move(task)});
  }
  changed_.notify_all();
}

void TreeWalkTeam::finish(Group& group) {
  std::unique_lock lock(mutex_);
  while (group.unfinished_ > 0) {
    if (!queue_.empty())
      run(lock);
    else
      changed_.wait(lock);
  }
}

bool TreeWalkTeam::finishAny() {
  std::unique_lock lock(mutex_);
  const bool any = unfinished_ > 0;
  while (unfinished_ > 0) {
    if (!queue_.empty())
      run(lock);
    else
      changed_.wait(lock);
  }
  return any;
}

ErrorOrNil TreeWalkTeam::finishAll(const ErrorOrNil& own) {
  finishAny();
  const std::lock_guard lock(mutex_);
  return failure_ ? failure_ : own;
}

void TreeWalkTeam::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return !queue_.empty() || isEnding_; });
    if (queue_.empty()) return;
    run(lock);
  }
}

void TreeWalkTeam::run(std::unique_lock<std::mutex>& lock) {
  auto entry = std::move(queue_.front());
  queue_.pop_front();
  lock.unlock();
  auto error = perform(entry);
  entry.task = nullptr;  // with the handles that it holds
  lock.lock();
  if (error && entry.number < firstFailure_.load(std::memory_order_relaxed)) {
    firstFailure_.store(entry.number, std::memory_order_relaxed);
    failure_ = std::move(error);
  }
  --entry.group->unfinished_;
  --unfinished_;
  changed_.notify_all();
}

ErrorOrNil TreeWalkTeam::perform(Entry& entry) const {
  const auto shouldEnd = [this, number = entry.number] {
    return firstFailure_.load(std::memory_order_relaxed) < number;
  };
  if (shouldEnd()) return std::nullopt;
  try {
    return entry.task(shouldEnd);
  } catch (const std::exception&) {
    return Error::posix(posix::kNoMemory);
  }
}

}  // namespace vantrell
