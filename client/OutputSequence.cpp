// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/OutputSequence.h"

namespace vantrell {

void OutputSequence::add(std::uint64_t number, OutputStream stream, const Data& chunk) {
  if (number <= next_) {
    sink_(stream, chunk);  // due, or late
    if (number == next_) ++next_;
    handOutDue();
    return;
  }
  held_.emplace(number, Held{stream, chunk});
  bytesHeld_ += chunk.size();
  if (bytesHeld_ > kMostBytesHeld || held_.size() > kMostChunksHeld) flush();
}

void OutputSequence::handOutDue() {
  while (!held_.empty() && held_.begin()->first <= next_) {
    const auto node = held_.extract(held_.begin());
    bytesHeld_ -= node.mapped().chunk.size();
    sink_(node.mapped().stream, node.mapped().chunk);
    if (node.key() == next_) ++next_;
  }
}

void OutputSequence::flush() {
  for (const auto& [number, held] : held_) {
    sink_(held.stream, held.chunk);
    next_ = number + 1;
  }
  held_.clear();
  bytesHeld_ = 0;
}

}  // namespace vantrell
