// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "treewalk/QELDirectoryEnumerator.h"
#include "treewalk/WalkedObject.h"

namespace vantrell {

/// A stretch of a walk: the next few hundred objects in their order. It keeps the folders that they lie in open. One
/// thread at a time, but that the folders may be walked on meanwhile.
class ReadAheadBlock {
 public:
  /// Empties the block, then takes objects from the walk until it is full. False when the walk has ended.
  bool fill(QELDirectoryEnumerator& walk);

  std::size_t size() const noexcept { return slots_.size(); }

  /// Reads the status of an object unless that is done.
  void readStatus(std::size_t index);

  /// Makes `object` the object at `index`; its texts hold as long as the block keeps its contents. Once for each.
  void take(std::size_t index, WalkedObject& object);

  /// How many levels were open when the object was found.
  std::size_t levelsAt(std::size_t index) const noexcept { return slots_[index].levels; }

 private:
  static constexpr std::size_t kObjects = 256;
  static constexpr std::size_t kFolders = 16;  // which bounds the descriptors

  struct Slot {
    std::size_t text = 0;  // where the relative path begins
    std::size_t textLength = 0;
    std::size_t nameLength = 0;
    std::size_t folder = 0;
    std::size_t levels = 0;
    host::FileType listedType = host::FileType::Unknown;
    bool isEntered = false;
    bool isPathFaithful = true;
    EntryRefusal refusal = EntryRefusal::None;
    std::optional<Result<host::FileStatus>> status;
  };

  void add(const WalkedObject& object, std::size_t levels);

  std::string texts_;  // each followed by a zero byte
  std::vector<std::shared_ptr<host::DirectoryHandle>> folders_;
  std::vector<Slot> slots_;
};

}  // namespace vantrell
