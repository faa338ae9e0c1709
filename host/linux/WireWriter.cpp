// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/WireWriter.h"

#include <algorithm>
#include <cerrno>
#include <string>

#include "host/linux/WireFormat.h"
#include "host/linux/WireText.h"

namespace vantrell::host {

namespace {

bool isCollection(const Value& value) noexcept {
  return value.asArray() || value.asDictionary() || value.asError();
}

bool holdsDictionariesOnly(const Array& array) noexcept {
  return std::ranges::all_of(array, [](const Value& value) { return value.asDictionary() != nullptr; });
}

}  // namespace

/// An open container of the message, closed at the end of the scope.
class WireWriter::Container {
 public:
  Container(WireWriter& writer, char type, const char* contents) : writer_(writer) {
    if (writer_.status_ == 0) writer_.note(sd_bus_message_open_container(writer_.message_, type, contents));
  }
  ~Container() {
    if (writer_.status_ == 0) writer_.note(sd_bus_message_close_container(writer_.message_));
  }
  Container(const Container&) = delete;
  Container& operator=(const Container&) = delete;

 private:
  WireWriter& writer_;
};

void WireWriter::basic(char type, const void* value, std::size_t size) {
  if (status_ == 0) note(sd_bus_message_append_basic(message_, type, value));
  bytes_ += size;
}

void WireWriter::text(std::string_view text) {
  std::string replaced;
  if (!isSendableText(text)) {
    replaced = sendableText(text);
    text = replaced;
  }
  char* space = nullptr;
  if (status_ == 0) note(sd_bus_message_append_string_space(message_, text.size(), &space));
  if (status_ == 0) std::ranges::copy(text, space);
  bytes_ += text.size() + 8;
}

void WireWriter::signed32(std::int32_t number) {
  basic('i', &number, sizeof number);
}

void WireWriter::signedNumber(std::int64_t number) {
  basic('x', &number, sizeof number);
}

void WireWriter::unsignedNumber(std::uint64_t number) {
  basic('t', &number, sizeof number);
}

void WireWriter::data(DataView bytes) {
  if (status_ == 0) note(sd_bus_message_append_array(message_, 'y', bytes.data(), bytes.size()));
  bytes_ += bytes.size() + 8;
}

void WireWriter::descriptors(int descriptor) {
  const Container list(*this, 'a', "h");
  if (descriptor >= 0) basic('h', &descriptor, 4);
}

bool WireWriter::mayAppend(const Value& value) noexcept {
  const bool sendable = !value.isNull() && (depth_ < kMaximumValueDepth || !isCollection(value));
  if (!sendable && unsendable_ == Unsendable::Refuse) note(-EINVAL);
  return sendable && status_ == 0;
}

void WireWriter::variant(const Value& value) {
  if (!mayAppend(value)) return note(-EINVAL);
  if (const std::string* string = value.asString()) {
    const Container variant(*this, 'v', "s");
    text(*string);
  } else if (const Data* bytes = value.asData()) {
    const Container variant(*this, 'v', kDataSignature);
    data(*bytes);
  } else if (const Number* number = value.asNumber()) {
    contents(*number);
  } else if (const Date* date = value.asDate()) {
    contents(*date);
  } else {
    ++depth_;
    if (const Array* array = value.asArray()) {
      contents(*array);
    } else if (const Dictionary* entries = value.asDictionary()) {
      contents(*entries);
    } else if (const Error* failure = value.asError()) {
      contents(*failure);
    }
    --depth_;
  }
}

void WireWriter::contents(const Number& number) {
  switch (number.kind()) {
    case Number::Kind::Boolean: {
      const Container variant(*this, 'v', "b");
      const int flag = number.boolValue() ? 1 : 0;
      return basic('b', &flag, sizeof flag);
    }
    case Number::Kind::Signed: {
      const Container variant(*this, 'v', "x");
      return signedNumber(number.signedValue());
    }
    case Number::Kind::Unsigned: {
      const Container variant(*this, 'v', "t");
      return unsignedNumber(number.unsignedValue());
    }
    case Number::Kind::Real: {
      const Container variant(*this, 'v', "d");
      const double real = number.doubleValue();
      return basic('d', &real, sizeof real);
    }
  }
}

void WireWriter::contents(const Date& date) {
  const Container variant(*this, 'v', kDateSignature);
  const Container structure(*this, 'r', "xu");
  signedNumber(date.seconds);
  basic('u', &date.nanoseconds, sizeof date.nanoseconds);
}

void WireWriter::contents(const Array& elements) {
  if (!elements.empty() && depth_ < kMaximumValueDepth && holdsDictionariesOnly(elements)) {
    return variantOfDictionaries(elements);
  }
  const Container variant(*this, 'v', kArraySignature);
  array(elements);
}

void WireWriter::contents(const Dictionary& entries) {
  const Container variant(*this, 'v', kDictionarySignature);
  dictionary(entries);
}

void WireWriter::contents(const Error& failure) {
  const Container variant(*this, 'v', kErrorSignature);
  error(failure);
}

void WireWriter::variantOfDictionaries(const Array& array) {
  const Container variant(*this, 'v', kDictionariesSignature);
  const Container list(*this, 'a', kDictionarySignature);
  ++depth_;
  for (const Value& element : array) dictionary(*element.asDictionary());
  --depth_;
}

void WireWriter::array(const Array& array) {
  const Container list(*this, 'a', "v");
  for (const Value& element : array) {
    if (mayAppend(element)) variant(element);
  }
}

void WireWriter::dictionaryEntry(std::string_view key, const Value& value) {
  const Container entry(*this, 'e', "sv");
  text(key);
  const Array* array = value.asArray();
  if (array && key == kFileObjectInfoKey && depth_ + 2 <= kMaximumValueDepth && holdsDictionariesOnly(*array)) {
    ++depth_;
    variantOfDictionaries(*array);
    --depth_;
  } else {
    variant(value);
  }
}

void WireWriter::dictionary(const Dictionary& dictionary) {
  const Container list(*this, 'a', "{sv}");
  for (const DictionaryEntry& entry : dictionary) {
    if (mayAppend(entry.value)) dictionaryEntry(entry.key, entry.value);
  }
}

void WireWriter::error(const Error& error) {
  const Container structure(*this, 'r', "sxa{sv}");
  text(error.domain());
  signedNumber(error.code());
  dictionary(error.userInfo());
}

void WireWriter::errorOrNil(const ErrorOrNil& failure) {
  const Container list(*this, 'a', kErrorSignature);
  if (failure) error(*failure);
}

}  // namespace vantrell::host
