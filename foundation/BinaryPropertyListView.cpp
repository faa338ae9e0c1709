// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/BinaryPropertyListView.h"

#include <bit>

#include "foundation/BinaryPropertyListChecker.h"
#include "foundation/PropertyListErrors.h"
#include "foundation/Unicode.h"

namespace vantrell {

using Node = BinaryPropertyListView::Node;

namespace {

bool isEqual(const BinaryPropertyListLayout& layout, const BinaryPropertyListObject& object, std::string_view ascii) {
  if (!object.isText() || object.count != ascii.size()) return false;
  const auto contents = layout.contentsOf(object);
  if (object.kind == BinaryPropertyListKind::AsciiText) return textOf(contents) == ascii;
  for (std::size_t i = 0; i < ascii.size(); ++i) {
    if (contents[2 * i] != 0 || contents[2 * i + 1] != static_cast<std::uint8_t>(ascii[i])) return false;
  }
  return true;
}

}  // namespace

Result<BinaryPropertyListView> BinaryPropertyListView::fromData(DataView data, const PropertyListLimits& limits) {
  if (data.size() > limits.maximumSize) return failure(corruptPropertyList("larger than allowed"));
  const auto layout = BinaryPropertyListLayout::fromData(data);
  if (!layout) return failure(corruptPropertyList("header or trailer malformed"));
  if (const char* problem = problemOfBinaryPropertyList(*layout, data.size(), limits.maximumDepth)) {
    return failure(corruptPropertyList(problem));
  }
  return BinaryPropertyListView(*layout);
}

Node BinaryPropertyListView::root() const noexcept {
  return {layout_, layout_.topObject};
}

// The check has found every object that can be reached sound, so there is one.
Node::Node(const BinaryPropertyListLayout& layout, std::uint64_t object) noexcept : layout_(layout) {
  layout_.objectAt(layout_.offsetOf(object), object_);
}

std::optional<Number> Node::asNumber() const noexcept {
  if (kind() != Kind::Number) return std::nullopt;
  const std::uint8_t* contents = layout_.bytes + object_.contents;
  switch (object_.marker) {
    case 0x08:
    case 0x09:
      return Number(object_.marker == 0x09);
    case 0x22:
      return Number(static_cast<double>(
          std::bit_cast<float>(static_cast<std::uint32_t>(BinaryPropertyListLayout::bigEndian(contents, 4)))));
    case 0x23:
      return Number(std::bit_cast<double>(BinaryPropertyListLayout::bigEndian(contents, 8)));
    case 0x14: {
      // The high half holds nothing but the sign.
      const auto low = BinaryPropertyListLayout::bigEndian(contents + 8, 8);
      const bool fitsSigned = contents[0] != 0 || low >> 63 == 0;
      return fitsSigned ? Number(static_cast<std::int64_t>(low)) : Number(low);
    }
    default:
      return Number(static_cast<std::int64_t>(
          BinaryPropertyListLayout::bigEndian(contents, static_cast<unsigned>(object_.count))));
  }
}

std::optional<Date> Node::asDate() const noexcept {
  if (kind() != Kind::Date) return std::nullopt;
  const auto bits = BinaryPropertyListLayout::bigEndian(layout_.bytes + object_.contents, 8);
  return Date::fromSecondsSinceReferenceDate(std::bit_cast<double>(bits));
}

std::optional<DataView> Node::asData() const noexcept {
  if (kind() != Kind::Data) return std::nullopt;
  return layout_.contentsOf(object_);
}

std::optional<std::uint32_t> Node::asUid() const noexcept {
  if (kind() != Kind::Uid) return std::nullopt;
  return static_cast<std::uint32_t>(
      BinaryPropertyListLayout::bigEndian(layout_.bytes + object_.contents, static_cast<unsigned>(object_.count)));
}

std::optional<std::string> Node::asText() const {
  if (kind() == Kind::AsciiText) return std::string(textOf(layout_.contentsOf(object_)));
  if (kind() == Kind::Utf16Text) return utf8FromUtf16(layout_.contentsOf(object_), ByteOrder::BigEndian);
  return std::nullopt;
}

bool Node::isTextEqualTo(std::string_view ascii) const noexcept {
  return isEqual(layout_, object_, ascii);
}

Node Node::referenced(std::uint64_t index) const noexcept {
  return {layout_, layout_.referenceAt(object_.contents, index)};
}

Node Node::elementAt(std::size_t index) const noexcept {
  return referenced(index);
}
Node Node::keyAt(std::size_t index) const noexcept {
  return referenced(index);
}
Node Node::valueAt(std::size_t index) const noexcept {
  return referenced(object_.count + index);
}

std::optional<Node> Node::find(std::string_view asciiKey) const noexcept {
  if (kind() != Kind::Dictionary) return std::nullopt;
  BinaryPropertyListObject key;
  for (std::size_t index = count(); index-- > 0;) {
    const std::uint64_t number = layout_.referenceAt(object_.contents, index);
    if (layout_.objectAt(layout_.offsetOf(number), key) && isEqual(layout_, key, asciiKey)) return valueAt(index);
  }
  return std::nullopt;
}

}  // namespace vantrell
