// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string_view>

#include "foundation/Data.h"
#include "host/linux/WireFormat.h"

namespace vantrell::host {

/// The bytes of one D-Bus message as they grow, in this machine's byte order: a sink of ValueWriter. Alignment counts
/// from the message's beginning. What would exceed the protocol's bounds (WireFormat.h) fails; a failed message is of
/// no use until it is begun anew.
class MarshalledMessage {
 public:
  /// Where an open array's length stands, and its first element.
  struct Mark {
    std::size_t length = 0;
    std::size_t first = 0;
  };

  MarshalledMessage() = default;
  MarshalledMessage(MarshalledMessage&&) noexcept = default;
  MarshalledMessage& operator=(MarshalledMessage&&) noexcept = default;

  /// Begins anew with these bytes; the space is kept.
  void begin(std::string_view bytes);

  Mark open(char type, const char* contents);
  void close(char type, const Mark& mark);
  template <class T>
  void number(char, T value) {
    std::memcpy(place(sizeof value, sizeof value), &value, sizeof value);
  }
  /// Text that may not be sent as it is (WireText.h) is sent with replacement characters.
  void text(std::string_view text);
  void data(DataView bytes);
  /// g, at most 255 bytes.
  void signature(std::string_view text);
  void alignTo(std::size_t alignment) { place(alignment, 0); }

  /// Overwrites a number in what is there.
  void patch(std::size_t offset, std::uint32_t number) noexcept {
    std::memcpy(space_.get() + offset, &number, sizeof number);
  }

  void fail(int) noexcept { failed_ = true; }
  bool failed() const noexcept { return failed_; }

  std::size_t size() const noexcept { return size_; }
  std::size_t capacity() const noexcept { return capacity_; }
  std::string_view bytes() const noexcept { return {space_.get(), size_}; }

 private:
  static constexpr std::size_t kPadding = 8;

  // Where `size` bytes go, behind zeros up to the alignment.
  char* place(std::size_t alignment, std::size_t size) {
    const std::size_t start = (size_ + alignment - 1) & ~(alignment - 1);
    if (start + size + kPadding > capacity_) return placeInMore(start, size);
    std::memset(space_.get() + size_, 0, kPadding);
    size_ = start + size;
    return space_.get() + start;
  }
  char* placeInMore(std::size_t start, std::size_t size);
  static constexpr std::size_t alignmentOf(char firstOfElement) noexcept {
    switch (firstOfElement) {
      case 'v':
      case 'y':
        return 1;
      case 'a':
        return 4;
      default:  // structures and dictionary entries
        return 8;
    }
  }

  std::unique_ptr<char[]> space_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
  bool failed_ = false;
};

inline MarshalledMessage::Mark MarshalledMessage::open(char type, const char* contents) {
  if (type == 'v') {
    signature(contents);
    return {};
  }
  if (type != 'a') {
    alignTo(8);
    return {};
  }
  const auto length = static_cast<std::size_t>(place(4, 4) - space_.get());
  alignTo(alignmentOf(contents[0]));
  return {length, size_};
}

inline void MarshalledMessage::close(char type, const Mark& mark) {
  if (type != 'a' || failed_) return;
  const std::size_t length = size_ - mark.first;
  if (length > kMaximumArrayBytes) return fail(E2BIG);
  patch(mark.length, static_cast<std::uint32_t>(length));
}

inline void MarshalledMessage::signature(std::string_view text) {
  char* to = place(1, text.size() + 2);
  *to = static_cast<char>(text.size());
  std::memcpy(to + 1, text.data(), text.size());
  to[text.size() + 1] = '\0';
}

}  // namespace vantrell::host
