// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "foundation/Dictionary.h"
#include "foundation/Value.h"
#include "treewalk/QELDirectoryEnumerator.h"

namespace vantrell {

/// Counts what a walk hands out, on a thread of its own where that takes long.
class ObjectCount {
 public:
  /// `walk` may be null, which counts as nothing.
  explicit ObjectCount(std::unique_ptr<QELDirectoryEnumerator> walk);
  /// Stops counting.
  ~ObjectCount();
  ObjectCount(const ObjectCount&) = delete;
  ObjectCount& operator=(const ObjectCount&) = delete;

  /// Nothing while it still counts.
  std::optional<std::size_t> ifKnown();
  /// Waits for it.
  std::size_t get();

 private:
  static constexpr std::size_t kObjectsForOneThread = 512;

  bool countUpTo(std::size_t limit);
  void countAll() noexcept;

  std::unique_ptr<QELDirectoryEnumerator> walk_;
  std::size_t count_ = 0;
  std::atomic<bool> stop_ = false;
  std::atomic<bool> isKnown_ = false;
  std::exception_ptr failure_;
  std::thread thread_;
};

/// Hits on their way to a client who is told which part of the whole has been searched: until the whole is known they
/// wait, some thousand at most.
class CountedResults {
 public:
  using Send = std::function<void(const Dictionary&)>;

  CountedResults(ObjectCount& total, const Send& send) : total_(total), send_(send) { records_.reserve(kBatchSize); }

  Array& records() noexcept { return records_; }
  /// After every object.
  void objectDone(std::size_t index);
  /// After the last one. False when there are none, as the count has it; then nothing was sent.
  bool finish();

 private:
  static constexpr std::size_t kBatchSize = 20;
  static constexpr std::size_t kMaximumWaiting = 100;

  struct Batch {
    std::size_t index;
    Array records;
  };
  void sendWaiting(std::size_t total);

  ObjectCount& total_;
  const Send& send_;
  Array records_;
  std::vector<Batch> waiting_;
};

}  // namespace vantrell
