// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/Dictionary.h"

#include <algorithm>

#include "foundation/Value.h"

namespace vantrell {

namespace {
auto lowerBound(auto& entries, std::string_view key) noexcept {
  return std::ranges::lower_bound(entries, key, {},
                                  [](const DictionaryEntry& entry) { return std::string_view(entry.key); });
}
}  // namespace

Dictionary::Dictionary() = default;
Dictionary::Dictionary(const Dictionary&) = default;
Dictionary::Dictionary(Dictionary&&) noexcept = default;
Dictionary& Dictionary::operator=(const Dictionary&) = default;
Dictionary& Dictionary::operator=(Dictionary&&) noexcept = default;
Dictionary::~Dictionary() = default;

Dictionary::Dictionary(std::initializer_list<DictionaryEntry> entries) : Dictionary(fromEntries(entries)) {}

Dictionary Dictionary::fromEntries(std::vector<DictionaryEntry> entries) {
  Dictionary result;
  const auto isInOrder = [](const DictionaryEntry& one, const DictionaryEntry& next) { return one.key < next.key; };
  const auto outOfOrder = [&](const auto& one, const auto& next) { return !isInOrder(one, next); };
  // What this system writes comes back in order.
  if (std::ranges::adjacent_find(entries, outOfOrder) == entries.end()) {
    result.entries_ = std::move(entries);
    return result;
  }
  std::vector<DictionaryEntry*> order;
  order.reserve(entries.size());
  for (auto& entry : entries) order.push_back(&entry);
  // Of equal keys the one given last comes first, and is the one that is taken over.
  std::ranges::sort(order, [](const DictionaryEntry* one, const DictionaryEntry* other) {
    const auto comparison = one->key <=> other->key;
    return comparison == 0 ? one > other : comparison < 0;
  });
  result.entries_.reserve(order.size());
  for (auto* entry : order) {
    if (!result.entries_.empty() && result.entries_.back().key == entry->key) continue;
    result.entries_.push_back(std::move(*entry));
  }
  return result;
}

const Value* Dictionary::find(std::string_view key) const noexcept {
  const auto it = lowerBound(entries_, key);
  return it != entries_.end() && it->key == key ? &it->value : nullptr;
}

Value* Dictionary::find(std::string_view key) noexcept {
  const auto it = lowerBound(entries_, key);
  return it != entries_.end() && it->key == key ? &it->value : nullptr;
}

void Dictionary::set(std::string key, Value value) {
  const auto it = lowerBound(entries_, key);
  if (it != entries_.end() && it->key == key) {
    it->value = std::move(value);
  } else {
    entries_.insert(it, DictionaryEntry{std::move(key), std::move(value)});
  }
}

bool Dictionary::remove(std::string_view key) {
  const auto it = lowerBound(entries_, key);
  if (it == entries_.end() || it->key != key) return false;
  entries_.erase(it);
  return true;
}

std::size_t Dictionary::size() const noexcept {
  return entries_.size();
}
Dictionary::const_iterator Dictionary::begin() const noexcept {
  return entries_.begin();
}
Dictionary::const_iterator Dictionary::end() const noexcept {
  return entries_.end();
}
bool Dictionary::operator==(const Dictionary& other) const {
  return entries_ == other.entries_;
}

}  // namespace vantrell
