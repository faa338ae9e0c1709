// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Date.h"
#include "foundation/Number.h"
#include "foundation/PropertyList.h"
#include "foundation/Result.h"

namespace vantrell {

/// A binary property list read in place: nothing is copied and, for lists of up to 256 objects, nothing allocated. The
/// whole list is checked once (every offset and reference, nesting, no cycle), so what the accessors hand out is sound.
/// The bytes must outlive the view and all that it hands out.
class BinaryPropertyListView {
 public:
  class Node;

  /// The same errors as propertyListFromData.
  static Result<BinaryPropertyListView> fromData(DataView data, const PropertyListLimits& limits = {});

  Node root() const noexcept;

 private:
  friend class Node;
  DataView data_;
  std::uint64_t topObject_ = 0;
  std::uint64_t objectCount_ = 0;
  std::uint64_t offsetTable_ = 0;
  unsigned offsetSize_ = 0;
  unsigned referenceSize_ = 0;
};

/// One object of the list. A cheap value; valid as long as the view that it came from.
class BinaryPropertyListView::Node {
 public:
  enum class Kind : std::uint8_t { Null, Number, Date, Data, AsciiText, Utf16Text, Uid, Array, Dictionary };

  Kind kind() const noexcept;

  std::optional<Number> asNumber() const noexcept;
  std::optional<Date> asDate() const noexcept;
  std::optional<DataView> asData() const noexcept;
  /// True when this is a text equal to `ascii`, which must be pure ASCII; a UTF-16 text is compared unit by unit.
  bool isTextEqualTo(std::string_view ascii) const noexcept;

  /// Elements of an array, pairs of a dictionary, else 0.
  std::size_t count() const noexcept;
  /// An element of an array; `index` < count().
  Node elementAt(std::size_t index) const noexcept;
  Node keyAt(std::size_t index) const noexcept;
  Node valueAt(std::size_t index) const noexcept;
  /// The value under an ASCII key of a dictionary (the last of equal keys), or nothing.
  std::optional<Node> find(std::string_view asciiKey) const noexcept;

 private:
  friend class BinaryPropertyListView;
  Node(const BinaryPropertyListView& list, std::uint64_t offset) : list_(&list), offset_(offset) {}
  const BinaryPropertyListView* list_;
  std::uint64_t offset_;
};

}  // namespace vantrell
