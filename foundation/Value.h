// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <concepts>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Date.h"
#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/Number.h"

namespace vantrell {

class Value;
using Array = std::vector<Value>;

/// The placeholder for "no value" inside a collection.
struct Null {
  bool operator==(const Null&) const = default;
};

/// One value of the kinds that property lists, arguments, feedback messages and user info are made of. Text is UTF-8.
class Value {
 public:
  using Storage = std::variant<Null, std::string, Number, Data, Date, Array, Dictionary, Error>;

  Value() = default;
  Value(Null) {}
  Value(std::string text) : storage_(std::move(text)) {}
  Value(std::string_view text) : storage_(std::string(text)) {}
  Value(const char* text) : storage_(std::string(text)) {}
  Value(Number number) : storage_(number) {}
  template <class T>
  requires(std::integral<T> || std::floating_point<T>) Value(T number) : storage_(Number(number)) {}
  Value(Data data) : storage_(std::move(data)) {}
  Value(Date date) : storage_(date) {}
  Value(Array array) : storage_(std::move(array)) {}
  Value(Dictionary dictionary) : storage_(std::move(dictionary)) {}
  Value(Error error) : storage_(std::move(error)) {}

  const Storage& storage() const noexcept { return storage_; }

  bool isNull() const noexcept { return std::holds_alternative<Null>(storage_); }

  /// The contents when the value is of that kind, else nullptr.
  const std::string* asString() const noexcept { return std::get_if<std::string>(&storage_); }
  const Number* asNumber() const noexcept { return std::get_if<Number>(&storage_); }
  const Data* asData() const noexcept { return std::get_if<Data>(&storage_); }
  const Date* asDate() const noexcept { return std::get_if<Date>(&storage_); }
  const Array* asArray() const noexcept { return std::get_if<Array>(&storage_); }
  const Dictionary* asDictionary() const noexcept { return std::get_if<Dictionary>(&storage_); }
  const Error* asError() const noexcept { return std::get_if<Error>(&storage_); }
  Array* asArray() noexcept { return std::get_if<Array>(&storage_); }
  Dictionary* asDictionary() noexcept { return std::get_if<Dictionary>(&storage_); }

  /// The name of the value's class as refusals report it: NSString, NSNumber, NSData, NSDate, NSArray, NSDictionary,
  /// NSError, NSNull.
  std::string_view className() const noexcept;

  bool operator==(const Value& other) const { return storage_ == other.storage_; }

 private:
  Storage storage_;
};

struct DictionaryEntry {
  std::string key;
  Value value;

  bool operator==(const DictionaryEntry&) const = default;
};

}  // namespace vantrell
