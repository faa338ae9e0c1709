// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Value.h"
#include "host/linux/WireFormat.h"

namespace vantrell::host {

/// What becomes of a value that the wire has no form for: the null placeholder, and what is nested too deeply.
enum class Unsendable : std::uint8_t {
  Omit,    // left out of its collection: an answer arrives with what can be said
  Refuse,  // the whole message fails: a request must not be changed on its way
};

/// Which form each value takes on the wire, whoever puts the bytes there: `Sink` is sd-bus's message (WireWriter) or
/// bytes of our own (MarshalledMessage).
///
/// A sink has `open(type, contents)`, whose result goes to the `close(type, mark)` of the same container (types a, v, r
/// and e as sd-bus names them); `number(type, value)`, `text`, `data`; `fail(number)` and `failed()`. Once failed, it
/// takes no more.
template <class Sink>
class ValueWriter {
 public:
  /// `sink` must outlive the writer.
  ValueWriter(Sink& sink, Unsendable unsendable) noexcept : sink_(sink), unsendable_(unsendable) {}

  void variant(const Value& value);               // v
  void array(const Array& array);                 // av
  void dictionary(const Dictionary& dictionary);  // a{sv}
  void error(const Error& error);                 // (sxa{sv})
  void errorOrNil(const ErrorOrNil& error);       // a(sxa{sv})

 private:
  /// An open container, closed at the end of the scope.
  class Container {
   public:
    Container(Sink& sink, char type, const char* contents)
        : sink_(sink), type_(type), mark_(sink.open(type, contents)) {}
    ~Container() { sink_.close(type_, mark_); }
    Container(const Container&) = delete;
    Container& operator=(const Container&) = delete;

   private:
    Sink& sink_;
    const char type_;
    const typename Sink::Mark mark_;
  };

  static bool isCollection(const Value& value) noexcept {
    return value.asArray() || value.asDictionary() || value.asError();
  }
  static bool holdsDictionariesOnly(const Array& array) noexcept {
    return std::ranges::all_of(array, [](const Value& value) { return value.asDictionary() != nullptr; });
  }

  bool mayAppend(const Value& value) noexcept;
  void collection(const Value& value);
  void contents(const Number& number);
  void contents(const Date& date);
  void contents(const Array& array);
  void variantOfDictionaries(const Array& array);
  void dictionaryEntry(std::string_view key, const Value& value);

  Sink& sink_;
  const Unsendable unsendable_;
  int depth_ = 0;
};

template <class Sink>
bool ValueWriter<Sink>::mayAppend(const Value& value) noexcept {
  const bool sendable = !value.isNull() && (depth_ < kMaximumValueDepth || !isCollection(value));
  if (!sendable && unsendable_ == Unsendable::Refuse) sink_.fail(EINVAL);
  return sendable && !sink_.failed();
}

template <class Sink>
void ValueWriter<Sink>::variant(const Value& value) {
  if (!mayAppend(value)) return sink_.fail(EINVAL);
  if (const std::string* string = value.asString()) {
    const Container variant(sink_, 'v', "s");
    sink_.text(*string);
  } else if (const Number* number = value.asNumber()) {
    contents(*number);
  } else if (const Date* date = value.asDate()) {
    contents(*date);
  } else if (const Data* bytes = value.asData()) {
    const Container variant(sink_, 'v', kDataSignature);
    sink_.data(*bytes);
  } else {
    ++depth_;
    collection(value);
    --depth_;
  }
}

template <class Sink>
void ValueWriter<Sink>::collection(const Value& value) {
  if (const Array* elements = value.asArray()) {
    contents(*elements);
  } else if (const Dictionary* entries = value.asDictionary()) {
    const Container variant(sink_, 'v', kDictionarySignature);
    dictionary(*entries);
  } else if (const Error* failure = value.asError()) {
    const Container variant(sink_, 'v', kErrorSignature);
    error(*failure);
  }
}

template <class Sink>
void ValueWriter<Sink>::contents(const Number& number) {
  switch (number.kind()) {
    case Number::Kind::Boolean: {
      const Container variant(sink_, 'v', "b");
      return sink_.number('b', std::uint32_t{number.boolValue() ? 1U : 0U});
    }
    case Number::Kind::Signed: {
      const Container variant(sink_, 'v', "x");
      return sink_.number('x', number.signedValue());
    }
    case Number::Kind::Unsigned: {
      const Container variant(sink_, 'v', "t");
      return sink_.number('t', number.unsignedValue());
    }
    case Number::Kind::Real: {
      const Container variant(sink_, 'v', "d");
      return sink_.number('d', number.doubleValue());
    }
  }
}

template <class Sink>
void ValueWriter<Sink>::contents(const Date& date) {
  const Container variant(sink_, 'v', kDateSignature);
  const Container structure(sink_, 'r', "xu");
  sink_.number('x', date.seconds);
  sink_.number('u', date.nanoseconds);
}

template <class Sink>
void ValueWriter<Sink>::contents(const Array& elements) {
  if (!elements.empty() && depth_ < kMaximumValueDepth && holdsDictionariesOnly(elements)) {
    return variantOfDictionaries(elements);
  }
  const Container variant(sink_, 'v', kArraySignature);
  array(elements);
}

template <class Sink>
void ValueWriter<Sink>::variantOfDictionaries(const Array& array) {
  const Container variant(sink_, 'v', kDictionariesSignature);
  const Container list(sink_, 'a', kDictionarySignature);
  ++depth_;
  for (const Value& element : array) dictionary(*element.asDictionary());
  --depth_;
}

template <class Sink>
void ValueWriter<Sink>::array(const Array& array) {
  const Container list(sink_, 'a', "v");
  for (const Value& element : array) {
    if (mayAppend(element)) variant(element);
  }
}

template <class Sink>
void ValueWriter<Sink>::dictionaryEntry(std::string_view key, const Value& value) {
  const Container entry(sink_, 'e', "sv");
  sink_.text(key);
  const Array* array = value.asArray();
  if (array && key == kFileObjectInfoKey && depth_ + 2 <= kMaximumValueDepth && holdsDictionariesOnly(*array)) {
    ++depth_;
    variantOfDictionaries(*array);
    --depth_;
  } else {
    variant(value);
  }
}

template <class Sink>
void ValueWriter<Sink>::dictionary(const Dictionary& dictionary) {
  const Container list(sink_, 'a', "{sv}");
  for (const DictionaryEntry& entry : dictionary) {
    if (mayAppend(entry.value)) dictionaryEntry(entry.key, entry.value);
  }
}

template <class Sink>
void ValueWriter<Sink>::error(const Error& error) {
  const Container structure(sink_, 'r', "sxa{sv}");
  sink_.text(error.domain());
  sink_.number('x', error.code());
  dictionary(error.userInfo());
}

template <class Sink>
void ValueWriter<Sink>::errorOrNil(const ErrorOrNil& failure) {
  const Container list(sink_, 'a', kErrorSignature);
  if (failure) error(*failure);
}

}  // namespace vantrell::host
