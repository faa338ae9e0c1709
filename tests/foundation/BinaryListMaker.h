// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <initializer_list>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/Data.h"

namespace vantrell::tests {

/// Puts binary property lists together object by object, sound or not. Objects are numbered in the order they are
/// added.
class BinaryListMaker {
 public:
  unsigned offsetSize = 4;
  unsigned referenceSize = 2;
  std::uint64_t root = 0;
  std::string_view header = "bplist00";

  std::size_t add(Data object) {
    objects_.push_back(std::move(object));
    return objects_.size() - 1;
  }
  std::size_t add(std::initializer_list<std::uint8_t> object) { return add(Data(object)); }

  std::size_t addText(std::string_view ascii) {
    Data object;
    appendMarker(object, 0x50, ascii.size());
    object.insert(object.end(), ascii.begin(), ascii.end());
    return add(std::move(object));
  }

  std::size_t addArray(const std::vector<std::uint64_t>& references) {
    return addContainer(0xA0, references.size(), references);
  }
  /// Keys first, then values.
  std::size_t addDictionary(const std::vector<std::uint64_t>& references) {
    return addContainer(0xD0, references.size() / 2, references);
  }

  static void appendNumber(Data& bytes, std::uint64_t number, unsigned size) {
    while (size-- > 0) bytes.push_back(static_cast<std::uint8_t>(number >> 8 * size));
  }
  static void appendMarker(Data& bytes, unsigned kind, std::uint64_t count) {
    bytes.push_back(static_cast<std::uint8_t>(kind | (count < 15 ? count : 15)));
    if (count < 15) return;
    bytes.push_back(0x13);
    appendNumber(bytes, count, 8);
  }

  Data make() const {
    Data bytes(header.begin(), header.end());
    std::vector<std::uint64_t> offsets;
    for (const auto& object : objects_) {
      offsets.push_back(bytes.size());
      bytes.insert(bytes.end(), object.begin(), object.end());
    }
    const std::uint64_t table = bytes.size();
    for (const auto offset : offsets) appendNumber(bytes, offset, offsetSize);
    appendTrailer(bytes, objects_.size(), root, table);
    return bytes;
  }

  void appendTrailer(Data& bytes, std::uint64_t count, std::uint64_t top, std::uint64_t table) const {
    appendNumber(bytes, 0, 6);
    appendNumber(bytes, offsetSize, 1);
    appendNumber(bytes, referenceSize, 1);
    appendNumber(bytes, count, 8);
    appendNumber(bytes, top, 8);
    appendNumber(bytes, table, 8);
  }

 private:
  std::size_t addContainer(unsigned kind, std::size_t count, const std::vector<std::uint64_t>& references) {
    Data object;
    appendMarker(object, kind, count);
    for (const auto reference : references) appendNumber(object, reference, referenceSize);
    return add(std::move(object));
  }

  std::vector<Data> objects_;
};

}  // namespace vantrell::tests
