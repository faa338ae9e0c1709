// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <map>

#include "foundation/Data.h"

namespace vantrell {

enum class OutputStream : bool { Output, Error };

/// Brings the chunks of a child's two streams back into the order in which the child's output was read: they share one
/// count, from 0. What comes early is held, up to a bound; beyond it the order is given up rather than the output.
class OutputSequence {
 public:
  using Sink = std::function<void(OutputStream stream, DataView chunk)>;
  static constexpr std::size_t kMostBytesHeld = std::size_t{16} << 20;
  static constexpr std::size_t kMostChunksHeld = 4096;

  explicit OutputSequence(Sink sink) : sink_(std::move(sink)) {}

  void add(std::uint64_t number, OutputStream stream, const Data& chunk);
  /// Hands out what is still held, in order.
  void flush();

 private:
  struct Held {
    OutputStream stream;
    Data chunk;
  };
  void handOutDue();

  Sink sink_;
  std::uint64_t next_ = 0;
  std::multimap<std::uint64_t, Held> held_;
  std::size_t bytesHeld_ = 0;
};

}  // namespace vantrell
