// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/ByteQueue.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace vantrell::host {

void ByteQueue::append(std::string_view bytes) {
  while (!bytes.empty()) {
    if (pieces_.empty() || pieces_.back().end == kPiece) {
      auto space = spare_ ? std::move(spare_) : std::make_unique_for_overwrite<char[]>(kPiece);
      pieces_.push_back({std::move(space)});
    }
    Piece& last = pieces_.back();
    const std::size_t count = std::min(bytes.size(), kPiece - last.end);
    std::memcpy(last.bytes.get() + last.end, bytes.data(), count);
    last.end += count;
    size_ += count;
    bytes.remove_prefix(count);
  }
}

std::string_view ByteQueue::front() const noexcept {
  if (pieces_.empty()) return {};
  const Piece& first = pieces_.front();
  return {first.bytes.get() + first.begin, first.end - first.begin};
}

void ByteQueue::consume(std::size_t count) noexcept {
  if (count == 0) return;
  Piece& first = pieces_.front();
  first.begin += count;
  size_ -= count;
  if (first.begin != first.end) return;
  spare_ = std::move(first.bytes);
  pieces_.pop_front();
}

void ByteQueue::clear() noexcept {
  pieces_.clear();
  spare_.reset();
  size_ = 0;
}

}  // namespace vantrell::host
