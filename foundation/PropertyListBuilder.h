// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "foundation/PropertyList.h"
#include "foundation/Value.h"

namespace vantrell {

/// Puts a property list together from what a reader comes upon, in order and without recursion, and counts what it
/// costs. Every step answers false when it is refused; problem() then says why, and the builder is of no further use.
class PropertyListBuilder {
 public:
  static constexpr std::size_t kUnlimited = std::numeric_limits<std::size_t>::max();

  /// What a value, and a key, cost beside the bytes of their contents.
  static constexpr std::size_t kValueCost = sizeof(Value);
  static constexpr std::size_t kKeyCost = sizeof(std::string);

  /// `budget` is how many bytes the result may take.
  explicit PropertyListBuilder(const PropertyListLimits& limits, std::size_t budget = kUnlimited);

  /// A text, number, date, data or null.
  bool addScalar(Value scalar);
  /// `expected` elements or pairs are made room for at once.
  bool beginArray(std::size_t expected = 0);
  bool beginDictionary(std::size_t expected = 0);
  /// Of equal keys the last one counts.
  bool addKey(std::string key);
  /// Ends the innermost container.
  bool end();

  bool insideContainer() const noexcept { return !frames_.empty(); }
  bool insideDictionary() const noexcept { return insideContainer() && frames_.back().isDictionary; }
  /// A dictionary's key has been added and not its value.
  bool awaitsValue() const noexcept { return insideContainer() && frames_.back().awaitsValue; }

  /// True once the root is complete.
  bool isComplete() const noexcept { return root_.has_value(); }
  Value takeRoot() { return std::move(*root_); }

  const char* problem() const noexcept { return problem_; }

 private:
  struct Frame {
    bool isDictionary = false;
    bool awaitsValue = false;
    Array elements;
    std::vector<DictionaryEntry> entries;
  };

  bool refuse(const char* problem) noexcept;
  bool charge(std::size_t cost) noexcept;
  bool admitValue(std::size_t contents) noexcept;
  bool begin(Frame frame);
  bool place(Value value);

  std::size_t maximumDepth_;
  std::size_t objectsLeft_;
  std::size_t budgetLeft_;
  std::vector<Frame> frames_;
  std::optional<Value> root_;
  const char* problem_ = "";
};

}  // namespace vantrell
