// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/BinaryPropertyListObjects.h"

#include <bit>
#include <limits>
#include <optional>
#include <string>

#include "foundation/BinaryPropertyListReader.h"
#include "foundation/PropertyList.h"
#include "foundation/PropertyListBuilder.h"
#include "foundation/Unicode.h"

namespace vantrell {

namespace {

constexpr std::string_view kUidKey = "CF$UID";

// What reading makes of a UID: a dictionary of one key and one number.
constexpr std::size_t kUidReadingCost =
    2 * PropertyListBuilder::kValueCost + PropertyListBuilder::kKeyCost + kUidKey.size();

std::optional<std::uint64_t> uidOf(const Dictionary& dictionary) {
  if (dictionary.size() != 1 || dictionary.begin()->key != kUidKey) return std::nullopt;
  const Number* number = dictionary.begin()->value.asNumber();
  if (number == nullptr) return std::nullopt;
  if (number->kind() != Number::Kind::Signed && number->kind() != Number::Kind::Unsigned) return std::nullopt;
  // A negative number is far above the bound when unsigned.
  if (number->unsignedValue() > 0xFFFFFFFF) return std::nullopt;
  return number->unsignedValue();
}

std::uint64_t bitsOf(const Date& date) noexcept {
  // Whole seconds are counted as integers first, so that a reader gets back the same date, however distant.
  const std::int64_t floor = std::numeric_limits<std::int64_t>::min() + kReferenceDateSince1970;
  const std::int64_t whole = (date.seconds < floor ? floor : date.seconds) - kReferenceDateSince1970;
  return std::bit_cast<std::uint64_t>(static_cast<double>(whole) + static_cast<double>(date.nanoseconds) / 1e9);
}

std::string repairedUtf8(std::string_view text) {
  std::string repaired;
  while (!text.empty()) {
    const auto character = decodeUtf8(text);
    appendUtf8(repaired, character.codePoint);
    text.remove_prefix(character.length);
  }
  return repaired;
}

}  // namespace

std::size_t BinaryPropertyListObjects::refuse(const char* problem) noexcept {
  problem_ = problem;
  return kNone;
}

// Recursion is as deep as kDeepestPropertyList allows.
std::size_t BinaryPropertyListObjects::add(const Value& value, std::size_t depth) {
  if (const auto* text = value.asString()) return addText(*text, PropertyListBuilder::kValueCost);
  if (const auto* number = value.asNumber()) return addNumber(*number);
  if (const auto* data = value.asData()) return addData(*data);
  if (const auto* date = value.asDate()) return addBits(Kind::Date, bitsOf(*date), PropertyListBuilder::kValueCost);
  if (const auto* array = value.asArray()) return addArray(*array, depth);
  if (const auto* dictionary = value.asDictionary()) return addDictionary(*dictionary, depth);
  return refuse("a value that no property list can hold");
}

std::size_t BinaryPropertyListObjects::addNumber(const Number& number) {
  constexpr std::size_t kCost = PropertyListBuilder::kValueCost;
  switch (number.kind()) {
    case Number::Kind::Boolean:
      return addBits(Kind::Boolean, number.boolValue() ? 1 : 0, kCost);
    case Number::Kind::Real:
      return addBits(Kind::Real, std::bit_cast<std::uint64_t>(number.doubleValue()), kCost);
    case Number::Kind::Signed:
      return addBits(number.signedValue() < 0 ? Kind::NegativeInteger : Kind::Integer, number.unsignedValue(), kCost);
    case Number::Kind::Unsigned:
      break;
  }
  return addBits(Kind::Integer, number.unsignedValue(), kCost);
}

std::size_t BinaryPropertyListObjects::addBits(Kind kind, std::uint64_t bits, std::size_t readingCost) {
  return share(numbers_, {kind, bits}, Object{.kind = kind, .bits = bits}, readingCost);
}

std::size_t BinaryPropertyListObjects::addText(std::string_view text, std::size_t overhead) {
  if (!isWellFormedUtf8(text)) text = repaired_.emplace_back(repairedUtf8(text));
  return share(texts_, text, Object{.kind = Kind::Text, .text = text}, overhead + text.size());
}

std::size_t BinaryPropertyListObjects::addData(DataView data) {
  return share(data_, textOf(data), Object{.kind = Kind::Data, .data = data},
               PropertyListBuilder::kValueCost + data.size());
}

std::size_t BinaryPropertyListObjects::addArray(const Array& array, std::size_t depth) {
  if (depth == kDeepestPropertyList) return refuse("nested too deeply");
  const std::size_t number = addContainer(Kind::Array, array.size());
  std::size_t reference = objects_[number].firstReference;
  for (const Value& element : array) {
    const std::size_t added = add(element, depth + 1);
    if (added == kNone) return kNone;
    references_[reference++] = added;
  }
  return number;
}

std::size_t BinaryPropertyListObjects::addDictionary(const Dictionary& dictionary, std::size_t depth) {
  if (depth == kDeepestPropertyList) return refuse("nested too deeply");
  if (const auto uid = uidOf(dictionary)) return addBits(Kind::Uid, *uid, kUidReadingCost);
  const std::size_t number = addContainer(Kind::Dictionary, dictionary.size());
  std::size_t reference = objects_[number].firstReference;
  for (const auto& entry : dictionary) references_[reference++] = addText(entry.key, PropertyListBuilder::kKeyCost);
  for (const auto& entry : dictionary) {
    const std::size_t added = add(entry.value, depth + 1);
    if (added == kNone) return kNone;
    references_[reference++] = added;
  }
  return number;
}

std::size_t BinaryPropertyListObjects::addContainer(Kind kind, std::size_t count) {
  const Object container{.kind = kind, .text = {}, .data = {}, .firstReference = references_.size(), .count = count};
  references_.resize(references_.size() + container.referenceCount());
  return make(container, PropertyListBuilder::kValueCost);
}

template <class Map>
std::size_t BinaryPropertyListObjects::share(Map& known, const typename Map::key_type& key, Object object,
                                             std::size_t readingCost) {
  const auto found = known.find(key);
  // The reference to it takes at least one byte.
  const std::size_t granted = kBinaryPropertyListAllowance + kBinaryPropertyListCostPerByte * (writtenSize_ + 1);
  if (found != known.end() && readingCost_ + readingCost <= granted) {
    writtenSize_ += 1;
    readingCost_ += readingCost;
    return found->second;
  }
  const std::size_t number = make(object, readingCost);
  known.insert_or_assign(key, number);
  return number;
}

// Each object takes a marker, an offset and a reference (but for the root, which the allowance has room for); a text
// takes two bytes for each three of UTF-8 in the worst case.
std::size_t BinaryPropertyListObjects::make(Object object, std::size_t readingCost) {
  writtenSize_ += 3 + object.text.size() / 2 + object.data.size();
  readingCost_ += readingCost;
  objects_.push_back(object);
  return objects_.size() - 1;
}

}  // namespace vantrell
