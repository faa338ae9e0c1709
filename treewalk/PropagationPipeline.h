// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/FileSystem.h"
#include "treewalk/PropagationObject.h"
#include "treewalk/PropagationRights.h"
#include "treewalk/ReadAheadEnumerator.h"

namespace vantrell {

/// The objects of a walk, in its order, prepared by a second thread for what the caller is to change: found, looked at,
/// held. That thread reads only, so that what happens, and in which order, is the caller's alone.
///
///     walk, status (a third thread) ──► second thread: hold, read list ──► ring of blocks ──► caller: set list, owner
///     …
///
/// At most kBlocks * kObjectsInABlock objects are under way at a time, kBlocks * kHeldInABlock of them held open. Where
/// no thread is to be had, the caller does it all.
class PropagationPipeline {
 public:
  /// What is to be done with every object; `list` and `folderPath` must outlive this.
  struct Task {
    std::optional<const host::AccessControlList*> list;
    PropagationRights rights;
    std::string_view folderPath;
  };

  struct Entry {
    std::string relativePath;
    std::shared_ptr<host::DirectoryHandle> folder;
    std::optional<Result<host::FileStatus>> status;
    std::optional<PropagationObject> object;  // where there is a status; refers to what stands above
  };

  /// `walk` must not have begun.
  PropagationPipeline(std::unique_ptr<QELDirectoryEnumerator> walk, const Log& log, const Task& task);
  ~PropagationPipeline();
  PropagationPipeline(const PropagationPipeline&) = delete;
  PropagationPipeline& operator=(const PropagationPipeline&) = delete;

  /// Valid until the next call; null at the end.
  Entry* next();

 private:
  static constexpr std::size_t kBlocks = 3;
  static constexpr std::size_t kObjectsInABlock = 128;
  static constexpr std::size_t kHeldInABlock = 32;

  struct Block {
    std::vector<Entry> entries = std::vector<Entry>(kObjectsInABlock);
    std::size_t count = 0;
    bool isLast = false;
  };

  Block& block(std::size_t number) noexcept { return blocks_[number % kBlocks]; }
  void fill(Block& block);
  void prepare(Entry& entry, const WalkedObject& object);
  bool takeNextBlock();
  void work() noexcept;

  ReadAheadEnumerator walk_;  // the thread's, if there is one
  const Task task_;
  std::array<Block, kBlocks> blocks_;

  std::size_t taken_ = 0;  // blocks begun by the caller: it is in number taken_ - 1
  std::size_t index_ = 0;  // in that block

  std::mutex lock_;
  std::condition_variable changed_;
  std::size_t filled_ = 0;    // blocks, ever
  std::size_t released_ = 0;  // likewise
  std::exception_ptr failure_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

}  // namespace vantrell
