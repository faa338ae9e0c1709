// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/PropertyListBuilder.h"

#include <algorithm>

namespace vantrell {

namespace {
std::size_t contentsOf(const Value& scalar) noexcept {
  if (const auto* text = scalar.asString()) return text->size();
  if (const auto* data = scalar.asData()) return data->size();
  return 0;
}
}  // namespace

PropertyListBuilder::PropertyListBuilder(const PropertyListLimits& limits, std::size_t budget)
    : maximumDepth_(std::min(limits.maximumDepth, kDeepestPropertyList)),
      objectsLeft_(limits.maximumObjects),
      budgetLeft_(budget) {}

bool PropertyListBuilder::addScalar(Value scalar) {
  return admitValue(contentsOf(scalar)) && place(std::move(scalar));
}

bool PropertyListBuilder::beginArray(std::size_t expected) {
  Frame frame;
  frame.elements.reserve(expected);
  return begin(std::move(frame));
}

bool PropertyListBuilder::beginDictionary(std::size_t expected) {
  Frame frame;
  frame.isDictionary = true;
  frame.entries.reserve(expected);
  return begin(std::move(frame));
}

bool PropertyListBuilder::begin(Frame frame) {
  if (frames_.size() >= maximumDepth_) return refuse("nested too deeply");
  if (!admitValue(0)) return false;
  frames_.push_back(std::move(frame));
  return true;
}

bool PropertyListBuilder::addKey(std::string key) {
  if (!insideDictionary() || awaitsValue()) return refuse("a key where none can stand");
  if (!charge(kKeyCost) || !charge(key.size())) return false;
  frames_.back().entries.push_back({std::move(key), Value()});
  frames_.back().awaitsValue = true;
  return true;
}

bool PropertyListBuilder::end() {
  if (!insideContainer()) return refuse("the end of no container");
  if (awaitsValue()) return refuse("a key without a value");
  Frame frame = std::move(frames_.back());
  frames_.pop_back();
  return place(frame.isDictionary ? Value(Dictionary::fromEntries(std::move(frame.entries)))
                                  : Value(std::move(frame.elements)));
}

// Before a value is made: is there a place for it, and does it keep to the limits?
bool PropertyListBuilder::admitValue(std::size_t contents) noexcept {
  if (isComplete()) return refuse("more than one root");
  if (insideDictionary() && !awaitsValue()) return refuse("a value without a key");
  if (objectsLeft_ == 0) return refuse("too many values");
  objectsLeft_ -= 1;
  return charge(kValueCost) && charge(contents);
}

bool PropertyListBuilder::place(Value value) {
  if (!insideContainer()) {
    root_ = std::move(value);
  } else if (Frame& frame = frames_.back(); frame.isDictionary) {
    frame.entries.back().value = std::move(value);
    frame.awaitsValue = false;
  } else {
    frame.elements.push_back(std::move(value));
  }
  return true;
}

bool PropertyListBuilder::charge(std::size_t cost) noexcept {
  if (cost > budgetLeft_) return refuse("shared values that would take too much memory");
  if (budgetLeft_ != kUnlimited) budgetLeft_ -= cost;
  return true;
}

bool PropertyListBuilder::refuse(const char* problem) noexcept {
  problem_ = problem;
  return false;
}

}  // namespace vantrell
