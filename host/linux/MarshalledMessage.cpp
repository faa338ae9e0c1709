// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/MarshalledMessage.h"

#include <algorithm>
#include <string>

#include "host/linux/WireText.h"

namespace vantrell::host {

void MarshalledMessage::begin(std::string_view bytes) {
  size_ = 0;
  failed_ = false;
  std::memcpy(place(1, bytes.size()), bytes.data(), bytes.size());
}

char* MarshalledMessage::placeInMore(std::size_t start, std::size_t size) {
  if (start + size > kMaximumWholeMessageBytes) {
    // What still comes goes over what is there: nobody will read it.
    failed_ = true;
    size_ = 0;
    start = 0;
  }
  const std::size_t needed = start + size + kPadding;
  if (needed > capacity_) {
    const std::size_t grown = std::max({needed, 2 * capacity_, std::size_t{4096}});
    auto space = std::make_unique_for_overwrite<char[]>(grown);
    if (size_ != 0) std::memcpy(space.get(), space_.get(), size_);
    space_ = std::move(space);
    capacity_ = grown;
  }
  std::memset(space_.get() + size_, 0, kPadding);
  size_ = start + size;
  return space_.get() + start;
}

void MarshalledMessage::text(std::string_view text) {
  std::string replaced;
  if (!isSendableText(text)) {
    replaced = sendableText(text);
    text = replaced;
  }
  if (text.size() > kMaximumWholeMessageBytes) return fail(E2BIG);
  number('u', static_cast<std::uint32_t>(text.size()));
  char* to = place(1, text.size() + 1);
  std::memcpy(to, text.data(), text.size());
  to[text.size()] = '\0';
}

void MarshalledMessage::data(DataView bytes) {
  if (bytes.size() > kMaximumArrayBytes) return fail(E2BIG);
  number('u', static_cast<std::uint32_t>(bytes.size()));
  if (!bytes.empty()) std::memcpy(place(1, bytes.size()), bytes.data(), bytes.size());
}

}  // namespace vantrell::host
