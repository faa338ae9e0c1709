// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/WireReader.h"

#include <utility>
#include <vector>

#include "host/linux/WireFormat.h"

namespace vantrell::host {

namespace {

template <class T>
bool into(Value& value, auto read) {
  T contents;
  const bool good = read(contents);
  if (good) value = Value(std::move(contents));
  return good;
}

}  // namespace

bool WireReader::more() {
  // At the end of a list 0; a list of broken contents reports itself when its next element is read.
  return sd_bus_message_at_end(message_, 0) == 0;
}

bool WireReader::text(std::string& text) {
  const char* read = nullptr;
  if (!basic('s', &read)) return false;
  text = read;
  return true;
}

bool WireReader::signed32(std::int32_t& number) {
  return basic('i', &number);
}

bool WireReader::unsignedNumber(std::uint64_t& number) {
  return basic('t', &number);
}

bool WireReader::data(Data& bytes) {
  const void* read = nullptr;
  std::size_t size = 0;
  if (sd_bus_message_read_array(message_, 'y', &read, &size) <= 0) return false;
  const auto* first = static_cast<const std::uint8_t*>(read);
  bytes.assign(first, first + size);
  return true;
}

template <class Wire, class Native>
bool WireReader::number(char type, Value& value) {
  Wire read{};
  if (!basic(type, &read)) return false;
  value = Value(Number(static_cast<Native>(read)));
  return true;
}

bool WireReader::date(Value& value) {
  Date date;
  if (!enter('r', "xu") || !basic('x', &date.seconds) || !basic('u', &date.nanoseconds) || !leave()) return false;
  value = Value(date);
  return date.nanoseconds <= 999999999;
}

bool WireReader::variant(Value& value) {
  char type = 0;
  const char* contained = nullptr;
  if (++count_ > kMaximumValueCount) return false;
  if (sd_bus_message_peek_type(message_, &type, &contained) <= 0 || type != 'v' || !contained) return false;
  // A copy, since the next look ahead replaces it.
  const std::string signature = contained;
  return enter('v', signature.c_str()) && contents(signature, value) && leave();
}

bool WireReader::contents(const std::string& signature, Value& value) {
  if (signature == kDataSignature) return into<Data>(value, [this](Data& bytes) { return data(bytes); });
  if (signature == kDateSignature) return date(value);
  if (signature.size() > 1) return collection(signature, value);
  switch (signature[0]) {
    case 's':
      return into<std::string>(value, [this](std::string& read) { return text(read); });
    case 'b':
      return number<int, bool>('b', value);
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

bool WireReader::collection(const std::string& signature, Value& value) {
  if (depth_ == kMaximumValueDepth) return false;
  ++depth_;
  bool good = false;
  if (signature == kArraySignature) {
    good = into<Array>(value, [this](Array& read) { return array(read); });
  } else if (signature == kDictionariesSignature) {
    good = into<Array>(value, [this](Array& read) { return dictionaries(read); });
  } else if (signature == kDictionarySignature) {
    good = into<Dictionary>(value, [this](Dictionary& read) { return dictionary(read); });
  } else if (signature == kErrorSignature) {
    ErrorOrNil read;
    good = error(read);
    if (good) value = Value(*std::move(read));
  }
  --depth_;
  return good;
}

bool WireReader::array(Array& array) {
  if (!enter('a', "v")) return false;
  while (more()) {
    if (!variant(array.emplace_back())) return false;
  }
  return leave();
}

bool WireReader::dictionaries(Array& array) {
  if (depth_ == kMaximumValueDepth || !enter('a', kDictionarySignature)) return false;
  ++depth_;
  while (more()) {
    if (++count_ > kMaximumValueCount) return false;
    Dictionary read;
    if (!dictionary(read)) return false;
    array.emplace_back(std::move(read));
  }
  --depth_;
  return leave();
}

bool WireReader::dictionary(Dictionary& dictionary) {
  if (!enter('a', "{sv}")) return false;
  std::vector<DictionaryEntry> entries;
  while (more()) {
    DictionaryEntry& entry = entries.emplace_back();
    if (!enter('e', "sv") || !text(entry.key) || !variant(entry.value) || !leave()) return false;
  }
  dictionary = Dictionary::fromEntries(std::move(entries));
  return leave();
}

bool WireReader::error(ErrorOrNil& error) {
  std::string domain;
  std::int64_t code = 0;
  Dictionary userInfo;
  if (!enter('r', "sxa{sv}") || !text(domain) || !basic('x', &code) || !dictionary(userInfo) || !leave()) return false;
  error = userInfo.empty() ? Error(std::move(domain), code) : Error(std::move(domain), code, std::move(userInfo));
  return true;
}

bool WireReader::errorOrNil(ErrorOrNil& failure) {
  failure.reset();
  if (!enter('a', kErrorSignature)) return false;
  if (more() && !error(failure)) return false;
  return leave();
}

}  // namespace vantrell::host
