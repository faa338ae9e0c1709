// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/MarshalledReader.h"

#include "host/linux/WireFormat.h"
#include "host/linux/WireText.h"

namespace vantrell::host {

bool MarshalledReader::skipPadding(std::size_t count) noexcept {
  if (end_ - at_ < count) return false;
  for (; count != 0; --count) {
    if (begin_[at_++] != '\0') return false;
  }
  return true;
}

bool MarshalledReader::enter(char type, const char* contents) noexcept {
  if (type != 'a') return align(8);
  return enterArray(contents[0] == 'v' ? 1 : contents[0] == 'a' ? 4 : 8);
}

bool MarshalledReader::enterArray(std::size_t alignment) noexcept {
  std::uint32_t length = 0;
  // The padding to the first element is there in an empty array, too, and is not part of the length.
  if (openArrays_ == kMaximumOpenArrays || !number('u', length) || !align(alignment)) return false;
  if (length > kMaximumArrayBytes || length > end_ - at_) return false;
  outerEnds_[openArrays_++] = end_;
  end_ = at_ + length;
  return true;
}

bool MarshalledReader::leave(char type) noexcept {
  if (type != 'a') return true;
  if (at_ != end_) return false;
  end_ = outerEnds_[--openArrays_];
  return true;
}

bool MarshalledReader::boolean(bool& value) noexcept {
  std::uint32_t read = 0;
  if (!number('b', read) || read > 1) return false;
  value = read != 0;
  return true;
}

bool MarshalledReader::text(std::string_view& text) noexcept {
  std::uint32_t length = 0;
  if (!number('u', length) || end_ - at_ <= length || begin_[at_ + length] != '\0') return false;
  text = {begin_ + at_, length};
  at_ += std::size_t{length} + 1;
  return isSendableText(text);
}

bool MarshalledReader::data(DataView& bytes) noexcept {
  std::uint32_t length = 0;
  if (!number('u', length) || length > kMaximumArrayBytes || length > end_ - at_) return false;
  bytes = bytesOf({begin_ + at_, length});
  at_ += length;
  return true;
}

bool MarshalledReader::signature(std::string_view& text) noexcept {
  std::uint8_t length = 0;
  if (!number('y', length) || end_ - at_ <= length || begin_[at_ + length] != '\0') return false;
  text = {begin_ + at_, length};
  at_ += std::size_t{length} + 1;
  return true;
}

}  // namespace vantrell::host
