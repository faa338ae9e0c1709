// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <dirent.h>

#include "foundation/Error.h"
#include "foundation/Result.h"

namespace vantrell::host {

/// Enumerates a folder whose file system can't be trusted with positions: removing an entry may shift those behind it,
/// and an offset may mean nothing to another descriptor. So a position is not an offset here but a place in an order of
/// its own, that of a number made from each name. The folder is read to its end before its first entry is handed out,
/// and read again from the start for whatever lies behind a position. An entry that stays is met exactly once, whatever
/// else comes or goes, also by a listing that goes on where another one stood; and every enumeration ends.
///
/// Memory is bounded: of a folder with more than `batchSize` entries the first so many are kept, and it is read once
/// more when they have been handed out. Two names can share a number; only who made names for that purpose loses one
/// of them, where another listing goes on at the other.
///
/// One thread at a time.
class FolderListing {
 public:
  static constexpr std::size_t kBatchSize = 65'536;

  /// `name` is valid until the next call and is followed by a zero byte; `type` is one of dirent.h's.
  struct Entry {
    std::string_view name;
    unsigned char type;
  };

  explicit FolderListing(std::size_t batchSize = kBatchSize) noexcept : batchSize_(batchSize) {}

  /// The next entry, "." and ".." left out; nothing at the end and in a folder that has been removed. An error that
  /// breaks off the reading is told behind the entries that were read. `stream` is always the same folder's; nobody
  /// else reads from it.
  Result<std::optional<Entry>> next(DIR* stream);

  /// 0 before the first entry.
  std::uint64_t position() const noexcept { return position_; }
  void setPosition(std::uint64_t position);

 private:
  struct Item {
    std::uint64_t key;
    std::uint32_t offset;  // of the name in names_
    unsigned char type;
  };
  /// The last entry that can still belong to a batch.
  struct Bound {
    std::uint64_t key;
    std::string name;
  };
  enum class Rest : std::uint8_t { Unread, Some, None };

  void readBatch(DIR* stream);
  void collect(std::string_view name, unsigned char type);
  void keepFirst(std::size_t count);
  void startBatch();
  std::string_view nameOf(const Item& item) const { return names_.c_str() + item.offset; }
  bool comesBefore(const Item& one, const Item& other) const {
    return one.key != other.key ? one.key < other.key : nameOf(one) < nameOf(other);
  }

  std::size_t batchSize_;
  std::uint64_t position_ = 0;  // the number of the entry handed out last
  std::string lastName_;        // its name where this listing knows it
  std::vector<Item> items_;     // this batch, in order
  std::string names_;           // a zero byte behind each
  std::size_t handedOut_ = 0;
  Rest rest_ = Rest::Unread;    // what lies behind this batch
  std::optional<Bound> bound_;  // while a batch is being read
  ErrorOrNil error_;
};

}  // namespace vantrell::host
