// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/ReadAheadEnumerator.h"

#include <system_error>
#include <utility>

namespace vantrell {

ReadAheadEnumerator::ReadAheadEnumerator(std::unique_ptr<QELDirectoryEnumerator> walk, const Log& log)
    : walk_(std::move(walk)), log_(log) {
  walk_->leaveLoggingToCaller();
}

ReadAheadEnumerator::~ReadAheadEnumerator() {
  {
    const std::lock_guard lock(lock_);
    stop_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

const WalkedObject* ReadAheadEnumerator::next() {
  while (levels_ != 0 && (index_ < block_.size() || nextBlock())) {
    const auto index = index_++;
    if (block_.levelsAt(index) > levels_) continue;  // skipped
    block_.take(index, object_);
    levels_ = block_.levelsAt(index) + (object_.isEntered() ? 1 : 0);
    QELDirectoryEnumerator::logRefusal(log_, object_.refusal());
    return &object_;
  }
  return nullptr;
}

void ReadAheadEnumerator::skipDescendents() {
  if (levels_ != 0) --levels_;
}

bool ReadAheadEnumerator::nextBlock() {
  if (!thread_.joinable()) {
    if (hasEnded_) return false;
    index_ = 0;
    hasEnded_ = !block_.fill(*walk_);
    if (!hasEnded_ && !hasBegun_) start();
    hasBegun_ = true;
    return block_.size() != 0;
  }
  std::unique_lock lock(lock_);
  spare_.push_back(std::move(block_));
  block_ = {};
  index_ = 0;
  changed_.wait(lock, [this] { return !ready_.empty() || isComplete_; });
  if (ready_.empty()) {
    if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
    return false;
  }
  block_ = std::move(ready_.front());
  ready_.erase(ready_.begin());
  readyCount_ = ready_.size();
  lock.unlock();
  changed_.notify_all();
  return true;
}

// Where no thread can be had the caller reads the blocks itself.
void ReadAheadEnumerator::start() try {
  thread_ = std::thread([this] { readAhead(); });
} catch (const std::system_error&) {
}

void ReadAheadEnumerator::readAhead() noexcept {
  try {
    for (bool isLast = false; !isLast;) {
      ReadAheadBlock block;
      {
        const std::lock_guard lock(lock_);
        if (!spare_.empty()) {
          block = std::move(spare_.back());
          spare_.pop_back();
        }
      }
      isLast = !block.fill(*walk_);
      readStatusWhileFull(block);
      if (!publish(std::move(block), isLast)) return;
    }
  } catch (...) {
    const std::lock_guard lock(lock_);
    failure_ = std::current_exception();
    isComplete_ = true;
    changed_.notify_all();
  }
}

void ReadAheadEnumerator::readStatusWhileFull(ReadAheadBlock& block) {
  for (std::size_t i = 0; i < block.size() && readyCount_ >= kBlocks && !stop_; ++i) block.readStatus(i);
}

bool ReadAheadEnumerator::publish(ReadAheadBlock block, bool isLast) {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [this] { return ready_.size() < kBlocks || stop_; });
  if (stop_) return false;
  if (block.size() != 0) ready_.push_back(std::move(block));
  isComplete_ = isLast;
  readyCount_ = ready_.size();
  lock.unlock();
  changed_.notify_all();
  return true;
}

}  // namespace vantrell
