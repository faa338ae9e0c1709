// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "foundation/Data.h"

namespace vantrell {

// The binary form, all numbers big-endian:
//
//   "bplist00" | objects | offset table | 6 unused bytes, offset size (1 byte), reference size (1 byte),
//                                       | object count, number of the root, start of the offset table (8 bytes each)
//
// An object is a marker byte, for some kinds a count (in the marker's low half, or as an integer object behind it when
// that half is 15), and its contents. Containers hold references: numbers of objects, which the offset table turns into
// positions.

enum class BinaryPropertyListKind : std::uint8_t {
  Null,
  Number,
  Date,
  Data,
  AsciiText,
  Utf16Text,
  Uid,
  Array,
  Dictionary
};

/// What a marker byte says about the object that it begins.
struct BinaryPropertyListMarker {
  BinaryPropertyListKind kind = BinaryPropertyListKind::Null;
  bool known = false;
  bool countFollows = false;       // as an integer object; else it is this one:
  std::uint8_t count = 0;          // bytes, UTF-16 units, elements or pairs
  std::uint8_t bytesPerCount = 0;  // of the contents
  std::uint8_t referencesPerCount = 0;
};

/// By marker byte.
extern const std::array<BinaryPropertyListMarker, 256> kBinaryPropertyListMarkers;

/// One object's extent in the list.
struct BinaryPropertyListObject {
  BinaryPropertyListKind kind = BinaryPropertyListKind::Null;
  std::uint8_t marker = 0;
  std::uint64_t count = 0;     // bytes, UTF-16 units, elements or pairs
  std::uint64_t contents = 0;  // position
  std::uint64_t end = 0;       // position behind the object

  bool isText() const noexcept {
    return kind == BinaryPropertyListKind::AsciiText || kind == BinaryPropertyListKind::Utf16Text;
  }
  bool isContainer() const noexcept { return kind >= BinaryPropertyListKind::Array; }
};

/// Where the parts of a list lie, which is all that reading an object takes. Borrows the bytes. Only fromData() makes
/// sound ones.
struct BinaryPropertyListLayout {
  static constexpr std::uint64_t kHeaderSize = 8;
  static constexpr std::uint64_t kTrailerSize = 32;

  const std::uint8_t* bytes = nullptr;
  std::uint64_t offsetTable = 0;  // also where the objects end
  std::uint64_t objectCount = 0;
  std::uint64_t topObject = 0;
  std::uint8_t offsetSize = 1;
  std::uint8_t referenceSize = 1;

  /// Header and trailer, each number checked against the size and the others. Nothing if they don't hold.
  static std::optional<BinaryPropertyListLayout> fromData(DataView data) noexcept;

  static std::uint64_t bigEndian(const std::uint8_t* at, unsigned size) noexcept {
    if (size == 1) return *at;
    if (size == 2) return static_cast<std::uint64_t>(at[0] << 8 | at[1]);
    std::uint64_t number = 0;
    for (unsigned i = 0; i < size; ++i) number = number << 8 | at[i];
    return number;
  }

  /// `object` < objectCount.
  std::uint64_t offsetOf(std::uint64_t object) const noexcept {
    return bigEndian(bytes + offsetTable + object * offsetSize, offsetSize);
  }

  /// The reference that is `index` places behind `references`, a position within the objects.
  std::uint64_t referenceAt(std::uint64_t references, std::uint64_t index) const noexcept {
    return bigEndian(bytes + references + index * referenceSize, referenceSize);
  }

  /// The object at any position. False unless its marker is a known one and its extent lies within the objects. What it
  /// holds is not looked at.
  bool objectAt(std::uint64_t position, BinaryPropertyListObject& object) const noexcept {
    if (position < kHeaderSize || position >= offsetTable) return false;
    object.marker = bytes[position];
    const auto& marker = kBinaryPropertyListMarkers[object.marker];
    if (!marker.known) return false;
    object.kind = marker.kind;
    object.count = marker.count;
    object.contents = position + 1;
    if (marker.countFollows && !readCount(object)) return false;
    const std::uint64_t unit = marker.bytesPerCount + std::uint64_t{marker.referencesPerCount} * referenceSize;
    // Counts of one byte can't overflow; dividing costs more than the rest.
    if (object.count > 0xFF && object.count > (offsetTable - object.contents) / unit) return false;
    object.end = object.contents + object.count * unit;
    return object.end <= offsetTable;
  }

  DataView contentsOf(const BinaryPropertyListObject& object) const noexcept {
    return {bytes + object.contents, static_cast<std::size_t>(object.end - object.contents)};
  }

 private:
  // The count that stands between marker and contents.
  bool readCount(BinaryPropertyListObject& object) const noexcept;
};

}  // namespace vantrell
