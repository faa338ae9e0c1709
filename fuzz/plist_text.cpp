// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/OlderTextPropertyListReader.h"
#include "fuzz/PropertyListRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vantrell;
  const DataView bytes(data, size);
  const auto value = valueFromOlderTextPropertyList(bytes, {});
  if (value) fuzz::requireRoundTrips(*value);
  // Whatever the first bytes are taken for.
  const auto list = propertyListFromData(bytes);
  if (list) fuzz::requireRoundTrips(list->root);
  return 0;
}
