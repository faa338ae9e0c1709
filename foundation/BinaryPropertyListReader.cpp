// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/BinaryPropertyListReader.h"

#include <vector>

#include "foundation/BinaryPropertyListView.h"
#include "foundation/PropertyListBuilder.h"
#include "foundation/PropertyListErrors.h"

namespace vantrell {

namespace {

using Node = BinaryPropertyListView::Node;

std::size_t budgetFor(std::size_t size) noexcept {
  const std::size_t largest = (PropertyListBuilder::kUnlimited - kBinaryPropertyListAllowance - 1);
  if (size > largest / kBinaryPropertyListCostPerByte) return largest;
  return size * kBinaryPropertyListCostPerByte + kBinaryPropertyListAllowance;
}

/// Walks the list with a stack of its own and hands what it meets to the builder. A shared object is made anew each
/// time it appears; the builder's limits end what that would blow up.
class BinaryPropertyListReader {
 public:
  BinaryPropertyListReader(std::size_t size, const PropertyListLimits& limits) : builder_(limits, budgetFor(size)) {}

  Result<Value> read(const Node& root) {
    bool going = add(root);
    while (going && !open_.empty()) going = step();
    if (!going) return failure(corruptPropertyList(builder_.problem()));
    return builder_.takeRoot();
  }

 private:
  struct Container {
    Node node;
    std::size_t next;
  };

  bool step() {
    auto& [node, next] = open_.back();
    if (next == node.count()) {
      open_.pop_back();
      return builder_.end();
    }
    const std::size_t index = next++;
    if (node.kind() == Node::Kind::Array) return add(node.elementAt(index));
    const Node value = node.valueAt(index);
    return builder_.addKey(*node.keyAt(index).asText()) && add(value);
  }

  bool add(const Node& node) {
    switch (node.kind()) {
      case Node::Kind::Null:
        return builder_.addScalar(Null{});
      case Node::Kind::Number:
        return builder_.addScalar(*node.asNumber());
      case Node::Kind::Date:
        return builder_.addScalar(*node.asDate());
      case Node::Kind::Data: {
        const DataView bytes = *node.asData();
        return builder_.addScalar(Data(bytes.begin(), bytes.end()));
      }
      case Node::Kind::AsciiText:
      case Node::Kind::Utf16Text:
        return builder_.addScalar(*node.asText());
      case Node::Kind::Uid:
        return addUid(*node.asUid());
      case Node::Kind::Array:
        open_.push_back({node, 0});
        return builder_.beginArray(node.count());
      case Node::Kind::Dictionary:
        open_.push_back({node, 0});
        return builder_.beginDictionary(node.count());
    }
    return false;
  }

  bool addUid(std::uint32_t uid) {
    return builder_.beginDictionary(1) && builder_.addKey("CF$UID") && builder_.addScalar(std::int64_t{uid}) &&
           builder_.end();
  }

  PropertyListBuilder builder_;
  std::vector<Container> open_;
};

}  // namespace

Result<Value> valueFromBinaryPropertyList(DataView data, const PropertyListLimits& limits) {
  const auto list = BinaryPropertyListView::fromData(data, limits);
  if (!list) return failure(list.error());
  return BinaryPropertyListReader(data.size(), limits).read(list->root());
}

}  // namespace vantrell
