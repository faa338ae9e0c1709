// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/FolderListing.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include <unistd.h>

#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kMostNameBytes = 8 << 20;

// FNV-1a, with a finish that spreads names that differ in their last bytes only. Never 0, which is before all names.
std::uint64_t numberOf(std::string_view name) noexcept {
  std::uint64_t number = 0xCBF29CE484222325U;
  for (const char c : name) number = (number ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  number = (number ^ (number >> 33)) * 0xFF51AFD7ED558CCDU;
  number = (number ^ (number >> 33)) * 0xC4CEB9FE1A85EC53U;
  number ^= number >> 33;
  return number == 0 ? 1 : number;
}

}  // namespace

Result<std::optional<FolderListing::Entry>> FolderListing::next(DIR* stream) {
  if (handedOut_ == items_.size() && rest_ != Rest::None) readBatch(stream);
  if (handedOut_ == items_.size()) {
    startBatch();
    if (auto error = std::exchange(error_, std::nullopt)) return failure(*error);
    return std::optional<Entry>{};
  }
  const auto& item = items_[handedOut_++];
  position_ = item.key;
  if (handedOut_ == items_.size() && rest_ == Rest::Some) lastName_ = nameOf(item);
  return std::optional(Entry{nameOf(item), item.type});
}

void FolderListing::setPosition(std::uint64_t position) {
  startBatch();
  position_ = position;
  lastName_.clear();
  rest_ = Rest::Unread;
  error_.reset();
}

void FolderListing::startBatch() {
  items_ = {};
  names_ = {};
  handedOut_ = 0;
}

void FolderListing::readBatch(DIR* stream) {
  startBatch();
  bound_.reset();
  rest_ = Rest::None;
  // Some libraries take a stream for rewound already where it stands at the start of what it has buffered.
  lseek(dirfd(stream), 0, SEEK_SET);
  rewinddir(stream);
  for (;;) {
    errno = 0;
    const auto* record = readdir(stream);
    if (!record) break;
    if (!isDotOrDotDot(record->d_name)) collect(record->d_name, record->d_type);
  }
  // A folder that was removed while it is open may read as missing; it has no entries left.
  if (errno != 0 && errno != ENOENT) error_ = errorFromErrno();
  if (items_.size() > batchSize_) keepFirst(batchSize_);
  std::ranges::sort(items_, [this](const Item& one, const Item& other) { return comesBefore(one, other); });
}

void FolderListing::collect(std::string_view name, unsigned char type) {
  const auto key = numberOf(name);
  if (key < position_ || (key == position_ && (lastName_.empty() || name <= lastName_))) return;
  if (bound_ && (key > bound_->key || (key == bound_->key && name > bound_->name))) {
    rest_ = Rest::Some;
    return;
  }
  items_.push_back({key, static_cast<std::uint32_t>(names_.size()), type});
  names_ += name;
  names_ += '\0';
  if (items_.size() >= 2 * batchSize_ || names_.size() >= kMostNameBytes)
    keepFirst(std::min(batchSize_, items_.size() / 2));
}

void FolderListing::keepFirst(std::size_t count) {
  const auto last = items_.begin() + static_cast<std::ptrdiff_t>(count) - 1;
  std::ranges::nth_element(items_, last,
                           [this](const Item& one, const Item& other) { return comesBefore(one, other); });
  bound_ = Bound{last->key, std::string(nameOf(*last))};
  rest_ = Rest::Some;
  items_.resize(count);
  std::string kept;
  for (auto& item : items_) {
    const auto name = nameOf(item);
    item.offset = static_cast<std::uint32_t>(kept.size());
    kept += name;
    kept += '\0';
  }
  names_ = std::move(kept);
}

}  // namespace vantrell::host
