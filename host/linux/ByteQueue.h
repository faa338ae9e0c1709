// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <deque>
#include <memory>
#include <string_view>

namespace vantrell::host {

/// Bytes that wait to be written, first in, first out. They are copied into pieces of one size, so that what is held is
/// what waits, however small or large the messages are that it comes from.
class ByteQueue {
 public:
  void append(std::string_view bytes);
  /// The first bytes; empty only where the queue is. Valid until the queue changes.
  std::string_view front() const noexcept;
  /// Takes off the first `count` bytes, no more than `front` holds.
  void consume(std::size_t count) noexcept;
  void clear() noexcept;

  bool empty() const noexcept { return size_ == 0; }
  std::size_t size() const noexcept { return size_; }

 private:
  static constexpr std::size_t kPiece = 32768;

  struct Piece {
    std::unique_ptr<char[]> bytes;
    std::size_t begin = 0;
    std::size_t end = 0;
  };

  std::deque<Piece> pieces_;  // none empty
  std::unique_ptr<char[]> spare_;
  std::size_t size_ = 0;
};

}  // namespace vantrell::host
