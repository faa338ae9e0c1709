// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace vantrell {

class Value;
struct DictionaryEntry;

/// Text keys and values, kept as one array sorted by the keys' bytes: small, quick to search, and always enumerated in
/// the same order.
class Dictionary {
 public:
  using const_iterator = std::vector<DictionaryEntry>::const_iterator;

  Dictionary();
  Dictionary(std::initializer_list<DictionaryEntry> entries);
  Dictionary(const Dictionary&);
  Dictionary(Dictionary&&) noexcept;
  Dictionary& operator=(const Dictionary&);
  Dictionary& operator=(Dictionary&&) noexcept;
  ~Dictionary();

  /// From entries in any order, in O(n log n); of entries with one key the last counts.
  static Dictionary fromEntries(std::vector<DictionaryEntry> entries);

  /// The value under `key`, or nullptr. Valid until the dictionary changes.
  const Value* find(std::string_view key) const noexcept;
  Value* find(std::string_view key) noexcept;
  bool contains(std::string_view key) const noexcept { return find(key) != nullptr; }

  /// Sets or replaces.
  void set(std::string key, Value value);
  /// True when there was such a key.
  bool remove(std::string_view key);

  std::size_t size() const noexcept;
  bool empty() const noexcept { return size() == 0; }
  const_iterator begin() const noexcept;
  const_iterator end() const noexcept;

  bool operator==(const Dictionary& other) const;

 private:
  std::vector<DictionaryEntry> entries_;
};

}  // namespace vantrell
