// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/FileNameSearch.h"

#include <limits>
#include <system_error>
#include <utility>

#include "treewalk/SearchRecords.h"

namespace vantrell {

ObjectCount::ObjectCount(std::unique_ptr<QELDirectoryEnumerator> walk) : walk_(std::move(walk)) {
  if (!walk_ || countUpTo(kObjectsForOneThread)) {
    isKnown_ = true;
    return;
  }
  try {
    thread_ = std::thread([this] { countAll(); });
  } catch (const std::system_error&) {
    countAll();
  }
}

ObjectCount::~ObjectCount() {
  stop_ = true;
  if (thread_.joinable()) thread_.join();
}

// True at the end of the walk.
bool ObjectCount::countUpTo(std::size_t limit) {
  while (count_ < limit && !stop_) {
    if (!walk_->next()) return true;
    ++count_;
  }
  return false;
}

void ObjectCount::countAll() noexcept {
  try {
    countUpTo(std::numeric_limits<std::size_t>::max());
  } catch (...) {
    failure_ = std::current_exception();
  }
  isKnown_ = true;
}

std::optional<std::size_t> ObjectCount::ifKnown() {
  return isKnown_ ? std::optional(get()) : std::nullopt;
}

std::size_t ObjectCount::get() {
  if (thread_.joinable()) thread_.join();
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
  return count_;
}

void CountedResults::objectDone(std::size_t index) {
  if (records_.size() < kBatchSize) return;
  waiting_.push_back({index, std::exchange(records_, {})});
  records_.reserve(kBatchSize);
  const auto total = waiting_.size() < kMaximumWaiting ? total_.ifKnown() : total_.get();
  if (total) sendWaiting(*total);
}

bool CountedResults::finish() {
  const auto total = total_.get();
  if (total == 0) return false;
  sendWaiting(total);
  send_(resultsMessage(1.0, std::exchange(records_, {})));
  return true;
}

// A tree that grew from nothing between the two walks has no fraction, and by the count no hits.
void CountedResults::sendWaiting(std::size_t total) {
  auto batches = std::exchange(waiting_, {});
  if (total == 0) return;
  for (auto& [index, records] : batches)
    send_(resultsMessage(static_cast<double>(index) / static_cast<double>(total), std::move(records)));
}

}  // namespace vantrell
