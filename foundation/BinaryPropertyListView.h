// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/BinaryPropertyListLayout.h"
#include "foundation/Data.h"
#include "foundation/Date.h"
#include "foundation/Number.h"
#include "foundation/PropertyList.h"
#include "foundation/Result.h"

namespace vantrell {

/// A binary property list read in place: nothing is copied and, for lists of up to 256 objects, nothing allocated. The
/// whole list is checked once (every offset and reference, nesting, no cycle), so what the accessors hand out is sound.
/// The bytes must outlive the view and all that it hands out; the view itself may be moved or end before its nodes.
class BinaryPropertyListView {
 public:
  class Node;

  /// The same errors as propertyListFromData, but for the limits on what is made: nothing is. Objects that can't be
  /// reached from the root are not looked at. Time is linear in the list's size, however its objects are shared.
  static Result<BinaryPropertyListView> fromData(DataView data, const PropertyListLimits& limits = {});

  Node root() const noexcept;

 private:
  explicit BinaryPropertyListView(const BinaryPropertyListLayout& layout) noexcept : layout_(layout) {}
  BinaryPropertyListLayout layout_;
};

/// One object of the list. A cheap value; valid as long as the list's bytes. A list may share objects, so whoever walks
/// all nodes must bound the walk: a few bytes can stand for any number of nodes.
class BinaryPropertyListView::Node {
 public:
  using Kind = BinaryPropertyListKind;

  Kind kind() const noexcept { return object_.kind; }

  /// Integers are signed numbers, and unsigned ones where they exceed the signed range.
  std::optional<Number> asNumber() const noexcept;
  std::optional<Date> asDate() const noexcept;
  std::optional<DataView> asData() const noexcept;
  std::optional<std::uint32_t> asUid() const noexcept;
  /// A text as UTF-8; lone surrogates become U+FFFD.
  std::optional<std::string> asText() const;
  /// True when this is a text equal to `ascii`, which must be pure ASCII; a UTF-16 text is compared unit by unit.
  bool isTextEqualTo(std::string_view ascii) const noexcept;

  /// Elements of an array, pairs of a dictionary, else 0.
  std::size_t count() const noexcept { return object_.isContainer() ? static_cast<std::size_t>(object_.count) : 0; }
  /// An element of an array; `index` < count().
  Node elementAt(std::size_t index) const noexcept;
  /// Of a pair of a dictionary; `index` < count().
  Node keyAt(std::size_t index) const noexcept;
  Node valueAt(std::size_t index) const noexcept;
  /// The value under an ASCII key of a dictionary (the last of equal keys), or nothing.
  std::optional<Node> find(std::string_view asciiKey) const noexcept;

 private:
  friend class BinaryPropertyListView;
  Node(const BinaryPropertyListLayout& layout, std::uint64_t object) noexcept;
  // The object that the container's reference with this number means.
  Node referenced(std::uint64_t index) const noexcept;

  BinaryPropertyListLayout layout_;
  BinaryPropertyListObject object_;
};

}  // namespace vantrell
