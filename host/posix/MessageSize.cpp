// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/MessageSize.h"

namespace vantrell::host {

std::size_t heldBytes(const Value& value) noexcept {
  if (const auto* text = value.asString()) return sizeof value + text->size();
  if (const auto* data = value.asData()) return sizeof value + data->size();
  if (const auto* array = value.asArray()) return sizeof value + heldBytes(*array);
  if (const auto* dictionary = value.asDictionary()) return sizeof value + heldBytes(*dictionary);
  if (const auto* error = value.asError()) return sizeof value + error->domain().size() + heldBytes(error->userInfo());
  return sizeof value;
}

std::size_t heldBytes(const Array& array) noexcept {
  std::size_t bytes = 0;
  for (const Value& element : array) bytes += heldBytes(element);
  return bytes;
}

std::size_t heldBytes(const Dictionary& dictionary) noexcept {
  std::size_t bytes = 0;
  for (const DictionaryEntry& entry : dictionary) bytes += sizeof entry.key + entry.key.size() + heldBytes(entry.value);
  return bytes;
}

}  // namespace vantrell::host
