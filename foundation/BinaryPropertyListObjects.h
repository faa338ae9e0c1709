// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Value.h"

namespace vantrell {

/// A value laid out as the numbered objects of a binary list, before the sizes of its numbers are known. Borrows the
/// value.
///
/// Equal scalars share one object as long as the list then stays within what our own reader grants shared objects;
/// beyond that they are written again, so that whatever is written can be read.
class BinaryPropertyListObjects {
 public:
  enum class Kind : std::uint8_t { Boolean, Integer, NegativeInteger, Real, Date, Uid, Text, Data, Array, Dictionary };

  struct Object {
    Kind kind = Kind::Boolean;
    std::uint64_t bits = 0;  // of a number, date or UID
    std::string_view text;   // well-formed UTF-8
    DataView data;
    std::size_t firstReference = 0;  // of an array or dictionary, in references()
    std::size_t count = 0;           // elements or pairs

    std::size_t referenceCount() const noexcept { return kind == Kind::Dictionary ? 2 * count : count; }
  };

  /// False when the value can't be written; problem() says why.
  bool layOut(const Value& root) { return add(root, 0) != kNone; }

  /// The root is the first one.
  const std::vector<Object>& objects() const noexcept { return objects_; }
  /// Numbers of objects: the elements of an array; all keys of a dictionary, then all its values.
  const std::vector<std::size_t>& references() const noexcept { return references_; }

  const char* problem() const noexcept { return problem_; }

 private:
  static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

  // All return the object's number, or kNone.
  std::size_t add(const Value& value, std::size_t depth);
  std::size_t addNumber(const Number& number);
  std::size_t addBits(Kind kind, std::uint64_t bits, std::size_t readingCost);
  std::size_t addText(std::string_view text, std::size_t overhead);
  std::size_t addData(DataView data);
  std::size_t addArray(const Array& array, std::size_t depth);
  std::size_t addDictionary(const Dictionary& dictionary, std::size_t depth);
  std::size_t addContainer(Kind kind, std::size_t count);
  std::size_t refuse(const char* problem) noexcept;

  // Shares what `known` has under `key`, or makes `object`.
  template <class Map>
  std::size_t share(Map& known, const typename Map::key_type& key, Object object, std::size_t readingCost);
  std::size_t make(Object object, std::size_t readingCost);

  std::vector<Object> objects_;
  std::vector<std::size_t> references_;
  std::map<std::pair<Kind, std::uint64_t>, std::size_t> numbers_;
  std::map<std::string_view, std::size_t> texts_;
  std::map<std::string_view, std::size_t> data_;
  std::deque<std::string> repaired_;  // owns the texts that were not well-formed
  std::size_t readingCost_ = 0;       // what the reader will charge
  std::size_t writtenSize_ = 0;       // the list takes at least this many bytes
  const char* problem_ = "";
};

}  // namespace vantrell
