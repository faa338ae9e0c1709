// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <string_view>
#include <thread>
#include <vector>

#include "foundation/Log.h"
#include "treewalk/QELDirectoryEnumerator.h"
#include "treewalk/ReadAheadBlock.h"

namespace vantrell {

/// A walk whose folders are read by a second thread, in blocks, while the caller deals with what was found: for callers
/// that ask for the status of every object. Hands out the same objects in the same order as the walk itself would, logs
/// the same, and skips the same.
///
///     second thread      next, next, … block 7 ─┐   (status too, while it has to wait for room)
///                                               ▼
///                              ready: 6  5  4  3
///                                               ▼
///     caller                       block 2: next(), status(), …
///
/// What waits is bounded: kBlocks blocks. A walk that fits into one block needs no second thread. Destruction stops the
/// reading and waits for the thread, which has at most one block to read until it ends.
///
/// While the caller asks for a status in a folder the thread may be enumerating it: handles allow that.
class ReadAheadEnumerator {
 public:
  /// `walk` must not have begun.
  ReadAheadEnumerator(std::unique_ptr<QELDirectoryEnumerator> walk, const Log& log);
  ~ReadAheadEnumerator();
  ReadAheadEnumerator(const ReadAheadEnumerator&) = delete;
  ReadAheadEnumerator& operator=(const ReadAheadEnumerator&) = delete;

  /// See QELDirectoryEnumerator.
  const WalkedObject* next();
  void skipDescendents();
  std::string_view basePrefix() const noexcept { return walk_->basePrefix(); }

 private:
  static constexpr std::size_t kBlocks = 8;

  bool nextBlock();
  void start();
  void readAhead() noexcept;
  void readStatusWhileFull(ReadAheadBlock& block);
  bool publish(ReadAheadBlock block, bool isLast);

  std::unique_ptr<QELDirectoryEnumerator> walk_;  // the thread's, once there is one
  Log log_;

  // The caller's.
  ReadAheadBlock block_;
  std::size_t index_ = 0;
  std::size_t levels_ = 1;  // open from the caller's point of view
  bool hasBegun_ = false;
  bool hasEnded_ = false;
  WalkedObject object_;

  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<ReadAheadBlock> ready_;  // in order
  std::vector<ReadAheadBlock> spare_;  // to be filled again
  std::atomic<std::size_t> readyCount_ = 0;
  std::atomic<bool> stop_ = false;
  bool isComplete_ = false;  // nothing comes after what is ready
  std::exception_ptr failure_;
  std::thread thread_;
};

}  // namespace vantrell
