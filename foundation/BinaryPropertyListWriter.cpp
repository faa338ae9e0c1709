// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "foundation/BinaryPropertyListObjects.h"
#include "foundation/PropertyList.h"
#include "foundation/PropertyListErrors.h"
#include "foundation/Unicode.h"

namespace vantrell {

namespace {

using Kind = BinaryPropertyListObjects::Kind;
using Object = BinaryPropertyListObjects::Object;

/// 1, 2, 4 or 8, the sizes that every reader takes.
unsigned sizeHolding(std::uint64_t number) noexcept {
  if (number <= 0xFF) return 1;
  if (number <= 0xFFFF) return 2;
  return number <= 0xFFFFFFFF ? 4 : 8;
}

unsigned powerOf(unsigned size) noexcept {
  return size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : 3;
}

/// Puts laid-out objects into bytes.
class BinaryPropertyListWriter {
 public:
  // References and offsets are wide enough for the object count and the table's position themselves, not just for what
  // lies below them: the platform's reader insists on it.
  explicit BinaryPropertyListWriter(const BinaryPropertyListObjects& list)
      : list_(list), referenceSize_(sizeHolding(list.objects().size())) {}

  Data write() {
    append("bplist00");
    std::vector<std::uint64_t> offsets;
    offsets.reserve(list_.objects().size());
    for (const Object& object : list_.objects()) {
      offsets.push_back(out_.size());
      writeObject(object);
    }
    const std::uint64_t table = out_.size();
    const unsigned offsetSize = sizeHolding(table);
    for (const std::uint64_t offset : offsets) append(offset, offsetSize);
    out_.insert(out_.end(), 6, 0);
    append(offsetSize, 1);
    append(referenceSize_, 1);
    append(offsets.size(), 8);
    append(std::uint64_t{0}, 8);
    append(table, 8);
    return std::move(out_);
  }

 private:
  void append(std::string_view bytes) { out_.insert(out_.end(), bytes.begin(), bytes.end()); }
  void append(std::uint64_t number, unsigned size) {
    while (size-- > 0) out_.push_back(static_cast<std::uint8_t>(number >> 8 * size));
  }

  void writeObject(const Object& object) {
    switch (object.kind) {
      case Kind::Boolean:
        return append(object.bits != 0 ? 0x09 : 0x08, 1);
      case Kind::Integer:
        return writeInteger(object.bits);
      case Kind::NegativeInteger:
        append(0x13, 1);
        return append(object.bits, 8);
      case Kind::Real:
        append(0x23, 1);
        return append(object.bits, 8);
      case Kind::Date:
        append(0x33, 1);
        return append(object.bits, 8);
      case Kind::Uid:
        append(0x80 | (sizeHolding(object.bits) - 1), 1);
        return append(object.bits, sizeHolding(object.bits));
      case Kind::Text:
        return writeText(object.text);
      case Kind::Data:
        writeMarker(0x40, object.data.size());
        return append(textOf(object.data));
      case Kind::Array:
      case Kind::Dictionary:
        return writeContainer(object);
    }
  }

  // Eight bytes are signed; what they can't hold takes sixteen.
  void writeInteger(std::uint64_t number) {
    if (number >> 63 != 0) {
      append(0x14, 1);
      append(std::uint64_t{0}, 8);
      return append(number, 8);
    }
    const unsigned size = sizeHolding(number);
    append(0x10 | powerOf(size), 1);
    append(number, size);
  }

  void writeMarker(unsigned kind, std::size_t count) {
    if (count < 15) return append(kind | count, 1);
    append(kind | 15, 1);
    writeInteger(count);
  }

  void writeText(std::string_view text) {
    if (isAscii(bytesOf(text))) {
      writeMarker(0x50, text.size());
      return append(text);
    }
    std::vector<char16_t> units;
    units.reserve(text.size());
    while (!text.empty()) {
      const auto [codePoint, length, wellFormed] = decodeUtf8(text);
      text.remove_prefix(length);
      if (codePoint >= 0x10000) units.push_back(static_cast<char16_t>(0xD800 + ((codePoint - 0x10000) >> 10)));
      units.push_back(static_cast<char16_t>(codePoint >= 0x10000 ? 0xDC00 | (codePoint & 0x3FF) : codePoint));
    }
    writeMarker(0x60, units.size());
    for (const char16_t unit : units) append(unit, 2);
  }

  void writeContainer(const Object& object) {
    writeMarker(object.kind == Kind::Array ? 0xA0 : 0xD0, object.count);
    const auto first = list_.references().begin() + static_cast<std::ptrdiff_t>(object.firstReference);
    const auto last = first + static_cast<std::ptrdiff_t>(object.referenceCount());
    for (auto reference = first; reference != last; ++reference) append(*reference, referenceSize_);
  }

  const BinaryPropertyListObjects& list_;
  unsigned referenceSize_;
  Data out_;
};

}  // namespace

Result<Data> binaryPropertyListFromValue(const Value& root) {
  BinaryPropertyListObjects list;
  if (!list.layOut(root)) return failure(unwritablePropertyList(list.problem()));
  return BinaryPropertyListWriter(list).write();
}

}  // namespace vantrell
