// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/PropagationPipeline.h"

#include <system_error>
#include <utility>

namespace vantrell {

PropagationPipeline::PropagationPipeline(std::unique_ptr<QELDirectoryEnumerator> walk, const Log& log, const Task& task)
    : walk_(std::move(walk), log), task_(task) {
  try {
    if (std::thread::hardware_concurrency() > 1) thread_ = std::thread([this] { work(); });
  } catch (const std::system_error&) {
    // The caller reads for itself.
  }
}

PropagationPipeline::~PropagationPipeline() {
  {
    const std::lock_guard lock(lock_);
    stop_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

PropagationPipeline::Entry* PropagationPipeline::next() {
  while (taken_ == 0 || index_ == block(taken_ - 1).count) {
    if (taken_ > 0 && block(taken_ - 1).isLast) return nullptr;
    if (!takeNextBlock()) return nullptr;
  }
  auto& current = block(taken_ - 1);
  if (index_ > 0) current.entries[index_ - 1].object.reset();  // lets go of the object
  return &current.entries[index_++];
}

bool PropagationPipeline::takeNextBlock() {
  if (taken_ > 0 && index_ > 0) block(taken_ - 1).entries[index_ - 1].object.reset();
  if (!thread_.joinable()) {
    fill(block(taken_));
  } else {
    std::unique_lock lock(lock_);
    released_ = taken_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return filled_ > taken_ || failure_; });
    if (failure_) std::rethrow_exception(failure_);
  }
  ++taken_;
  index_ = 0;
  return true;
}

void PropagationPipeline::work() noexcept {
  try {
    for (std::size_t number = 0;; ++number) {
      {
        std::unique_lock lock(lock_);
        changed_.wait(lock, [&] { return stop_ || number < released_ + kBlocks; });
        if (stop_) return;
      }
      auto& current = block(number);
      fill(current);
      const bool isLast = current.isLast;
      {
        const std::lock_guard lock(lock_);
        filled_ = number + 1;
      }
      changed_.notify_all();
      if (isLast) return;
    }
  } catch (...) {
    const std::lock_guard lock(lock_);
    failure_ = std::current_exception();
    changed_.notify_all();
  }
}

void PropagationPipeline::fill(Block& block) {
  block.count = 0;
  block.isLast = false;
  std::size_t held = 0;
  while (block.count < kObjectsInABlock && held < kHeldInABlock && !stop_) {
    const auto* object = walk_.next();
    if (!object) {
      block.isLast = true;
      return;
    }
    auto& entry = block.entries[block.count++];
    prepare(entry, *object);
    if (entry.object && entry.object->isHeld()) ++held;
  }
}

void PropagationPipeline::prepare(Entry& entry, const WalkedObject& object) {
  entry.object.reset();
  entry.relativePath = object.relativePath();
  entry.folder = object.sharedFolder();
  entry.status = object.status();
  if (!*entry.status) return;
  const auto* name = entry.relativePath.c_str() + (entry.relativePath.size() - object.name().size());
  entry.object.emplace(*entry.folder, name, **entry.status, task_.folderPath, entry.relativePath);
  if (task_.rights.skipsLocked && entry.object->isUserImmutable()) return;
  entry.object->prepare(task_.list, task_.rights);
}

}  // namespace vantrell
