// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Value.h"
#include "host/linux/WireFormat.h"

namespace vantrell::host {

/// Which value each form on the wire stands for, whoever reads the bytes: `Source` is sd-bus's message (WireReader) or
/// bytes that are read here (MarshalledReader). Each call reads one complete value of the named signature and returns
/// false where there is anything else, something that no value can stand for, or more than the bounds of WireFormat.h;
/// nothing more is to be read then.
///
/// A source has `enter(type, contents)`, `enterVariant(contained)`, `leave(type)` (types a, v, r and e as sd-bus names
/// them) and `more()`, true at an element of the list that was entered; `number(type, value)`, `boolean`, `text`,
/// `data`. A list of broken contents may report itself when its next element is read.
template <class Source>
class ValueReader {
 public:
  /// `source` must outlive the reader.
  explicit ValueReader(Source& source) noexcept : source_(source) {}

  [[nodiscard]] bool variant(Value& value);               // v
  [[nodiscard]] bool array(Array& array);                 // av
  [[nodiscard]] bool dictionary(Dictionary& dictionary);  // a{sv}
  /// Empty user info reads as none: the wire does not tell them apart.
  [[nodiscard]] bool error(ErrorOrNil& error);       // (sxa{sv})
  [[nodiscard]] bool errorOrNil(ErrorOrNil& error);  // a(sxa{sv})

 private:
  using Signature = typename Source::Signature;

  template <class Wire, class Native>
  bool number(char type, Value& value);
  bool boolean(Value& value);
  bool text(std::string& text);
  bool data(Value& value);
  bool date(Value& value);
  bool basic(char type, Value& value);
  bool contents(const Signature& signature, Value& value);
  bool collection(std::string_view signature, Value& value);
  bool dictionaries(Array& array);

  Source& source_;
  int depth_ = 0;
  std::size_t count_ = 0;
  std::size_t usualSize_ = 0;  // of the dictionary before; the next one will be alike
};

template <class Source>
template <class Wire, class Native>
bool ValueReader<Source>::number(char type, Value& value) {
  Wire read{};
  if (!source_.number(type, read)) return false;
  value = Value(Number(static_cast<Native>(read)));
  return true;
}

template <class Source>
bool ValueReader<Source>::boolean(Value& value) {
  bool read = false;
  if (!source_.boolean(read)) return false;
  value = Value(read);
  return true;
}

template <class Source>
bool ValueReader<Source>::text(std::string& text) {
  std::string_view read;
  if (!source_.text(read)) return false;
  text = read;
  return true;
}

template <class Source>
bool ValueReader<Source>::data(Value& value) {
  DataView read;
  if (!source_.data(read)) return false;
  value = Value(Data(read.begin(), read.end()));
  return true;
}

template <class Source>
bool ValueReader<Source>::date(Value& value) {
  Date date;
  if (!source_.enter('r', "xu") || !source_.number('x', date.seconds) || !source_.number('u', date.nanoseconds) ||
      !source_.leave('r')) {
    return false;
  }
  value = Value(date);
  return date.nanoseconds <= 999999999;
}

template <class Source>
bool ValueReader<Source>::variant(Value& value) {
  if (++count_ > kMaximumValueCount) return false;
  Signature signature;
  return source_.enterVariant(signature) && contents(signature, value) && source_.leave('v');
}

template <class Source>
bool ValueReader<Source>::contents(const Signature& signature, Value& value) {
  if (signature.size() == 1) return basic(signature[0], value);
  if (signature == kDataSignature) return data(value);
  if (signature == kDateSignature) return date(value);
  return collection(signature, value);
}

template <class Source>
bool ValueReader<Source>::basic(char type, Value& value) {
  switch (type) {
    case 's': {
      std::string_view read;
      if (!source_.text(read)) return false;
      value = Value(read);
      return true;
    }
    case 'b':
      return boolean(value);
    case 'y':
      return number<std::uint8_t, std::uint64_t>('y', value);
    case 'n':
      return number<std::int16_t, std::int64_t>('n', value);
    case 'q':
      return number<std::uint16_t, std::uint64_t>('q', value);
    case 'i':
      return number<std::int32_t, std::int64_t>('i', value);
    case 'u':
      return number<std::uint32_t, std::uint64_t>('u', value);
    case 'x':
      return number<std::int64_t, std::int64_t>('x', value);
    case 't':
      return number<std::uint64_t, std::uint64_t>('t', value);
    case 'd':
      return number<double, double>('d', value);
    default:
      return false;
  }
}

template <class Source>
bool ValueReader<Source>::collection(std::string_view signature, Value& value) {
  if (depth_ == kMaximumValueDepth) return false;
  ++depth_;
  bool good = false;
  if (signature == kArraySignature || signature == kDictionariesSignature) {
    Array read;
    good = signature == kArraySignature ? array(read) : dictionaries(read);
    if (good) value = Value(std::move(read));
  } else if (signature == kDictionarySignature) {
    Dictionary read;
    good = dictionary(read);
    if (good) value = Value(std::move(read));
  } else if (signature == kErrorSignature) {
    ErrorOrNil read;
    good = error(read);
    if (good) value = Value(*std::move(read));
  }
  --depth_;
  return good;
}

template <class Source>
bool ValueReader<Source>::array(Array& array) {
  if (!source_.enter('a', "v")) return false;
  while (source_.more()) {
    if (!variant(array.emplace_back())) return false;
  }
  return source_.leave('a');
}

template <class Source>
bool ValueReader<Source>::dictionaries(Array& array) {
  if (depth_ == kMaximumValueDepth || !source_.enter('a', kDictionarySignature)) return false;
  ++depth_;
  while (source_.more()) {
    if (++count_ > kMaximumValueCount) return false;
    Dictionary read;
    if (!dictionary(read)) return false;
    array.emplace_back(std::move(read));
  }
  --depth_;
  return source_.leave('a');
}

template <class Source>
bool ValueReader<Source>::dictionary(Dictionary& dictionary) {
  constexpr std::size_t kMostInAdvance = 8;
  if (!source_.enter('a', "{sv}")) return false;
  std::vector<DictionaryEntry> entries;
  if (source_.more()) entries.reserve(std::min(usualSize_, kMostInAdvance));
  while (source_.more()) {
    DictionaryEntry& entry = entries.emplace_back();
    if (!source_.enter('e', "sv") || !text(entry.key) || !variant(entry.value) || !source_.leave('e')) return false;
  }
  usualSize_ = entries.size();
  dictionary = Dictionary::fromEntries(std::move(entries));
  return source_.leave('a');
}

template <class Source>
bool ValueReader<Source>::error(ErrorOrNil& error) {
  std::string domain;
  std::int64_t code = 0;
  Dictionary userInfo;
  if (!source_.enter('r', "sxa{sv}") || !text(domain) || !source_.number('x', code) || !dictionary(userInfo) ||
      !source_.leave('r')) {
    return false;
  }
  error = userInfo.empty() ? Error(std::move(domain), code) : Error(std::move(domain), code, std::move(userInfo));
  return true;
}

template <class Source>
bool ValueReader<Source>::errorOrNil(ErrorOrNil& failure) {
  failure.reset();
  if (!source_.enter('a', kErrorSignature)) return false;
  if (source_.more() && !error(failure)) return false;
  return source_.leave('a');
}

}  // namespace vantrell::host
