// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/BinaryPropertyListLayout.h"

namespace vantrell {

namespace {

using Kind = BinaryPropertyListKind;

constexpr bool isIntegerSize(unsigned size) noexcept {
  return size >= 1 && size <= 8;
}

constexpr BinaryPropertyListMarker markerOf(unsigned byte) {
  const auto low = static_cast<std::uint8_t>(byte & 0x0F);
  const auto powerOfTwo = static_cast<std::uint8_t>(1u << (low & 7));
  const auto fixed = [](bool known, Kind kind, std::uint8_t size) {
    return BinaryPropertyListMarker{.kind = kind, .known = known, .count = size, .bytesPerCount = 1};
  };
  const auto counted = [low](Kind kind, std::uint8_t unitBytes, std::uint8_t references) {
    return BinaryPropertyListMarker{.kind = kind,
                                    .known = true,
                                    .countFollows = low == 15,
                                    .count = low,
                                    .bytesPerCount = unitBytes,
                                    .referencesPerCount = references};
  };
  switch (byte >> 4) {
    case 0x0:
      return low == 0 ? fixed(true, Kind::Null, 0) : fixed(low == 8 || low == 9, Kind::Number, 0);
    case 0x1:
      return fixed(low <= 4, Kind::Number, powerOfTwo);
    case 0x2:
      return fixed(low == 2 || low == 3, Kind::Number, powerOfTwo);
    case 0x3:
      return fixed(low == 3, Kind::Date, 8);
    case 0x4:
      return counted(Kind::Data, 1, 0);
    case 0x5:
      return counted(Kind::AsciiText, 1, 0);
    case 0x6:
      return counted(Kind::Utf16Text, 2, 0);
    case 0x8:
      return fixed(low <= 7, Kind::Uid, static_cast<std::uint8_t>(low + 1));
    case 0xA:
      return counted(Kind::Array, 0, 1);
    case 0xD:
      return counted(Kind::Dictionary, 0, 2);
    default:
      return {};
  }
}

}  // namespace

constexpr std::array<BinaryPropertyListMarker, 256> kBinaryPropertyListMarkers = [] {
  std::array<BinaryPropertyListMarker, 256> markers;
  for (unsigned byte = 0; byte < markers.size(); ++byte) markers[byte] = markerOf(byte);
  return markers;
}();

std::optional<BinaryPropertyListLayout> BinaryPropertyListLayout::fromData(DataView data) noexcept {
  if (data.size() < kHeaderSize + kTrailerSize + 1) return std::nullopt;
  const auto header = textOf(data.first(kHeaderSize));
  if (!header.starts_with("bplist0") || header.back() < '0' || header.back() > '9') return std::nullopt;
  const std::uint64_t end = data.size() - kTrailerSize;
  const std::uint8_t* trailer = data.data() + end;
  const BinaryPropertyListLayout layout{.bytes = data.data(),
                                        .offsetTable = bigEndian(trailer + 24, 8),
                                        .objectCount = bigEndian(trailer + 8, 8),
                                        .topObject = bigEndian(trailer + 16, 8),
                                        .offsetSize = trailer[6],
                                        .referenceSize = trailer[7]};
  if (!isIntegerSize(layout.offsetSize) || !isIntegerSize(layout.referenceSize)) return std::nullopt;
  if (layout.offsetTable <= kHeaderSize || layout.offsetTable >= end) return std::nullopt;
  if (layout.objectCount > (end - layout.offsetTable) / layout.offsetSize) return std::nullopt;
  if (layout.topObject >= layout.objectCount) return std::nullopt;
  return layout;
}

bool BinaryPropertyListLayout::readCount(BinaryPropertyListObject& object) const noexcept {
  if (object.contents >= offsetTable) return false;
  const std::uint8_t marker = bytes[object.contents];
  if (marker < 0x10 || marker > 0x13) return false;
  const unsigned size = 1u << (marker & 0x0F);
  object.contents += 1;
  if (size > offsetTable - object.contents) return false;
  object.count = bigEndian(bytes + object.contents, size);
  object.contents += size;
  return true;
}

}  // namespace vantrell
