// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/FoundationValues.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "foundation/Unicode.h"
#include "host/posix/MessageLimits.h"

namespace vantrell::host {

namespace {

std::string wellFormed(std::string_view text) {
  std::string result;
  result.reserve(text.size() + 16);
  while (!text.empty()) {
    const DecodedCharacter character = decodeUtf8(text);
    appendUtf8(result, character.codePoint);
    text.remove_prefix(character.length);
  }
  return result;
}

NSString* stringFromUtf8(std::string_view text) {
  // Not NSString's own initialiser: a byte-order mark at the beginning of a file name is a part of it.
  return CFBridgingRelease(CFStringCreateWithBytes(nullptr, bytesOf(text).data(), static_cast<CFIndex>(text.size()),
                                                   kCFStringEncodingUTF8, false));
}

NSNumber* numberFrom(const Number& number) {
  switch (number.kind()) {
    case Number::Kind::Boolean:
      return [NSNumber numberWithBool:number.boolValue()];
    case Number::Kind::Signed:
      return [NSNumber numberWithLongLong:number.signedValue()];
    case Number::Kind::Unsigned:
      return [NSNumber numberWithUnsignedLongLong:number.unsignedValue()];
    case Number::Kind::Real:
      return [NSNumber numberWithDouble:number.doubleValue()];
  }
}

/// A boolean is an object of its own type; an integer forgets whether it was made from an unsigned one, and counts as
/// that only where no signed one holds it.
Number numberFrom(NSNumber* number) {
  const auto plain = (__bridge CFNumberRef)number;
  if (CFGetTypeID(plain) == CFBooleanGetTypeID()) return Number(static_cast<bool>(number.boolValue));
  if (CFNumberIsFloatType(plain)) return Number(number.doubleValue);
  NSNumber* const largestSigned = [NSNumber numberWithLongLong:std::numeric_limits<std::int64_t>::max()];
  if ([number compare:largestSigned] == NSOrderedDescending) return Number(number.unsignedLongLongValue);
  return Number(number.longLongValue);
}

/// Makes objects. Where one may not be left out, the first that there is none for ends it all.
class ObjectMaker {
 public:
  explicit ObjectMaker(WithoutObject treatment) noexcept : treatment_(treatment) {}

  bool isRefused() const noexcept { return refused_; }

  id object(const Value& value) {
    if (const auto* text = value.asString()) return stringFrom(*text);
    if (const auto* number = value.asNumber()) return numberFrom(*number);
    if (const auto* bytes = value.asData()) return dataFrom(*bytes);
    if (const auto* date = value.asDate()) {
      return [NSDate dateWithTimeIntervalSinceReferenceDate:date->secondsSinceReferenceDate()];
    }
    if (value.isNull() || depth_ == kMaximumValueDepth) return refuse();
    ++depth_;
    id made = collection(value);
    --depth_;
    return made;
  }

  NSArray* array(const Array& elements) {
    NSMutableArray* made = [NSMutableArray arrayWithCapacity:elements.size()];
    for (const Value& element : elements) {
      if (id one = object(element)) [made addObject:one];
      if (refused_) return nil;
    }
    return made;
  }

  NSDictionary* dictionary(const Dictionary& entries) {
    NSMutableDictionary* made = [NSMutableDictionary dictionaryWithCapacity:entries.size()];
    for (const DictionaryEntry& entry : entries) {
      if (id one = object(entry.value)) [made setObject:one forKey:stringFrom(entry.key)];
      if (refused_) return nil;
    }
    return made;
  }

  NSError* error(const Error& error) {
    NSDictionary* userInfo = error.hasUserInfo() ? dictionary(error.userInfo()) : nil;
    if (refused_) return nil;
    return [NSError errorWithDomain:stringFrom(error.domain()) code:error.code() userInfo:userInfo];
  }

 private:
  id collection(const Value& value) {
    if (const auto* elements = value.asArray()) return array(*elements);
    if (const auto* entries = value.asDictionary()) return dictionary(*entries);
    return error(*value.asError());
  }

  id refuse() noexcept {
    if (treatment_ == WithoutObject::Refuse) refused_ = true;
    return nil;
  }

  const WithoutObject treatment_;
  int depth_ = 0;
  bool refused_ = false;
};

/// Makes values, as many and as large as one message may bring.
class ValueMaker {
 public:
  /// False where the object has no value; `value` is then of no use.
  bool value(id object, Value& value) {
    if (!spend(sizeof value) || count_++ == kMaximumValueCount) return exhaust();
    if ([object isKindOfClass:[NSString class]]) return text(object, value);
    if ([object isKindOfClass:[NSNumber class]]) return assign(value, numberFrom(static_cast<NSNumber*>(object)));
    if ([object isKindOfClass:[NSData class]]) {
      NSData* const data = object;
      return spend(data.length) && assign(value, bytesFrom(data));
    }
    if ([object isKindOfClass:[NSDate class]]) {
      NSDate* const date = object;
      return assign(value, Date::fromSecondsSinceReferenceDate(date.timeIntervalSinceReferenceDate));
    }
    if ([object isKindOfClass:[NSNull class]]) return assign(value, Null());
    if (depth_ == kMaximumValueDepth) return false;
    ++depth_;
    const bool good = collection(object, value);
    --depth_;
    return good;
  }

  bool array(NSArray* objects, Array& elements) {
    for (id object in objects) {
      if (!value(object, elements.emplace_back())) return false;
    }
    return true;
  }

  bool dictionary(NSDictionary* objects, Dictionary& entries) {
    std::vector<DictionaryEntry> made;
    for (id key in objects) {
      if (!entry(key, [objects objectForKey:key], made.emplace_back())) return false;
    }
    entries = Dictionary::fromEntries(std::move(made));
    return true;
  }

  /// Fails only where the message holds too much.
  bool error(NSError* object, ErrorOrNil& error) {
    std::vector<DictionaryEntry> made;
    NSDictionary* const userInfo = object.userInfo;
    for (id key in userInfo) {
      DictionaryEntry one;
      if (entry(key, [userInfo objectForKey:key], one)) made.push_back(std::move(one));
      if (exhausted_) return false;
    }
    if (!spend(object.domain.length)) return false;
    const std::int64_t code = object.code;
    error = made.empty() ? Error(textFrom(object.domain), code)
                         : Error(textFrom(object.domain), code, Dictionary::fromEntries(std::move(made)));
    return true;
  }

 private:
  template <class T>
  static bool assign(Value& value, T contents) {
    value = Value(std::move(contents));
    return true;
  }

  bool collection(id object, Value& value) {
    if ([object isKindOfClass:[NSArray class]]) {
      Array elements;
      return array(object, elements) && assign(value, std::move(elements));
    }
    if ([object isKindOfClass:[NSDictionary class]]) {
      Dictionary entries;
      return dictionary(object, entries) && assign(value, std::move(entries));
    }
    if (![object isKindOfClass:[NSError class]]) return false;
    ErrorOrNil made;
    return error(object, made) && assign(value, *std::move(made));
  }

  bool entry(id key, id object, DictionaryEntry& made) {
    Value name;
    if (![key isKindOfClass:[NSString class]] || !value(key, name) || !value(object, made.value)) return false;
    made.key = *name.asString();
    return true;
  }

  // A unit of its UTF-16 form is at least a byte here; the text is copied once before its size is known.
  bool text(NSString* string, Value& value) {
    if (!spend(string.length)) return false;
    std::string made = textFrom(string);
    return spend(made.size() - std::min<std::size_t>(made.size(), string.length)) && assign(value, std::move(made));
  }

  bool spend(std::size_t bytes) noexcept {
    if (bytes > bytesLeft_) return exhaust();
    bytesLeft_ -= bytes;
    return true;
  }

  bool exhaust() noexcept {
    exhausted_ = true;
    return false;
  }

  int depth_ = 0;
  std::size_t count_ = 0;
  // What is held of one message: its bytes, and what each value takes beside them.
  std::size_t bytesLeft_ = kMaximumMessageBytes + kMaximumValueCount * sizeof(Value);
  bool exhausted_ = false;
};

}  // namespace

NSString* stringFrom(std::string_view text) {
  if (text.empty()) return @"";
  // No decoder of Foundation's is asked about ill-formed text: it is replaced here, as on every host.
  NSString* string = isWellFormedUtf8(text) ? stringFromUtf8(text) : stringFromUtf8(wellFormed(text));
  return string ? string : @"";
}

std::string textFrom(NSString* string) {
  if (!string) return {};
  if (NSData* utf8 = [string dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:NO]) {
    return {static_cast<const char*>(utf8.bytes), utf8.length};
  }
  // Only a lone surrogate has no UTF-8.
  Data units(string.length * sizeof(unichar));
  [string getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, string.length)];
  return utf8FromUtf16(units, ByteOrder::LittleEndian);
}

NSData* dataFrom(DataView bytes) {
  return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

Data bytesFrom(NSData* data) {
  Data bytes(data.length);
  [data getBytes:bytes.data() length:bytes.size()];
  return bytes;
}

id objectFrom(const Value& value, WithoutObject treatment) {
  ObjectMaker maker(treatment);
  id made = maker.object(value);
  return maker.isRefused() ? nil : made;
}

NSArray* arrayFrom(const Array& array, WithoutObject treatment) {
  return ObjectMaker(treatment).array(array);
}

NSDictionary* dictionaryFrom(const Dictionary& dictionary, WithoutObject treatment) {
  return ObjectMaker(treatment).dictionary(dictionary);
}

NSError* errorFrom(const Error& error) {
  return ObjectMaker(WithoutObject::Omit).error(error);
}

std::optional<Value> valueFrom(id object) {
  Value value;
  if (!ValueMaker().value(object, value)) return std::nullopt;
  return value;
}

std::optional<Array> arrayFrom(NSArray* array) {
  Array elements;
  if (!array || !ValueMaker().array(array, elements)) return std::nullopt;
  return elements;
}

std::optional<Dictionary> dictionaryFrom(NSDictionary* dictionary) {
  Dictionary entries;
  if (!dictionary || !ValueMaker().dictionary(dictionary, entries)) return std::nullopt;
  return entries;
}

Error errorFrom(NSError* error) {
  ErrorOrNil made;
  if (ValueMaker().error(error, made)) return *std::move(made);
  return {textFrom(error.domain), error.code};
}

}  // namespace vantrell::host
