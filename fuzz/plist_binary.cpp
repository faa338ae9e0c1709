// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/BinaryPropertyListReader.h"
#include "foundation/BinaryPropertyListView.h"
#include "foundation/Unicode.h"
#include "fuzz/PropertyListRoundTrip.h"

namespace vantrell::fuzz {
namespace {

using Node = BinaryPropertyListView::Node;

/// Calls every accessor of up to `left` nodes. Shared objects make the walk longer than the list, so it is bounded.
void touch(const Node& node, std::size_t& left) {
  if (left == 0) return;
  --left;
  const auto text = node.asText();
  const bool isLeaf = node.asNumber() || node.asDate() || node.asData() || node.asUid() || text;
  require(!isLeaf || node.count() == 0);
  node.isTextEqualTo("CF$UID");
  if (text && isAscii(bytesOf(*text))) require(node.isTextEqualTo(*text));
  for (std::size_t i = 0; i < node.count() && left > 0; ++i) {
    if (node.kind() == Node::Kind::Array) {
      touch(node.elementAt(i), left);
      continue;
    }
    const auto key = node.keyAt(i).asText();
    require(key.has_value());
    if (isAscii(bytesOf(*key))) require(node.find(*key).has_value());
    touch(node.valueAt(i), left);
  }
}

}  // namespace
}  // namespace vantrell::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vantrell;
  const DataView bytes(data, size);
  const auto view = BinaryPropertyListView::fromData(bytes);
  const auto value = valueFromBinaryPropertyList(bytes, {});
  fuzz::require(view.has_value() || !value.has_value());
  if (view) {
    std::size_t left = 2000;
    fuzz::touch(view->root(), left);
  }
  if (value) fuzz::requireRoundTrips(*value);
  return 0;
}
