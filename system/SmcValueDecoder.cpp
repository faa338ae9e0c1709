// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/SmcValueDecoder.h"

#include <algorithm>
#include <cstring>
#include <string>

#include <fmt/core.h>

#include "foundation/Unicode.h"
#include "system/SmcBytes.h"
#include "system/SmcCodes.h"
#include "system/SmcFixedPoint.h"
#include "system/SmcRecordTypes.h"

namespace vantrell {

namespace {

using Decoded = std::optional<Value>;

enum class Shape : std::uint8_t {
  Unsigned8,
  Character,
  Flag,
  Float,
  ByteAsText,
  Signed16,
  Unsigned16,
  Unsigned32,
  Text,
  Dump,
  Revision
};

constexpr std::size_t kAnySize = 0;

struct PlainType {
  std::uint32_t code;
  std::size_t size;
  Shape shape;
};

constexpr PlainType kPlainTypes[] = {
    {smcCode("byte"), 1, Shape::Unsigned8},   {smcCode("ui8\0"), 1, Shape::Unsigned8},
    {smcCode("ui8 "), 1, Shape::Unsigned8},   {smcCode("{lsm"), 1, Shape::Unsigned8},
    {smcCode("{lss"), 1, Shape::Unsigned8},   {smcCode("{msp"), 1, Shape::Unsigned8},
    {smcCode("{mss"), 1, Shape::Unsigned8},   {smcCode("char"), 1, Shape::Character},
    {smcCode("flag"), 1, Shape::Flag},        {smcCode("flt "), 4, Shape::Float},
    {smcCode("si8\0"), 1, Shape::ByteAsText}, {smcCode("si8 "), 1, Shape::ByteAsText},
    {smcCode("si16"), 2, Shape::Signed16},    {smcCode("ui16"), 2, Shape::Unsigned16},
    {smcCode("ui6\0"), 2, Shape::Unsigned16}, {smcCode("ui6 "), 2, Shape::Unsigned16},
    {smcCode("{pwm"), 2, Shape::Unsigned16},  {smcCode("ui32"), 4, Shape::Unsigned32},
    {smcCode("ch8*"), kAnySize, Shape::Text}, {smcCode("hex_"), kAnySize, Shape::Dump},
    {smcCode("{rev"), 6, Shape::Revision},
};

std::string dump(DataView bytes) {
  std::string text;
  for (const auto byte : bytes) text += fmt::format("{:02x} ", byte);
  return text;
}

std::string characterOf(std::uint8_t byte) {
  std::string text;
  appendUtf8(text, byte);
  return text;
}

// The text ends before a zero byte, so that byte alone is no character.
Decoded textOfByte(std::uint8_t byte) {
  if (byte >= 0x80) return std::nullopt;
  return byte == 0 ? std::string() : characterOf(byte);
}

float hostFloat(DataView bytes) {
  float number;
  std::memcpy(&number, bytes.data(), sizeof number);
  return number;
}

Decoded decodedAs(Shape shape, DataView value) {
  switch (shape) {
    case Shape::Unsigned8:
      return value[0];
    case Shape::Character:
      return characterOf(value[0]);
    case Shape::Flag:
      return value[0] != 0;
    case Shape::Float:
      return hostFloat(value);
    case Shape::ByteAsText:
      return textOfByte(value[0]);
    case Shape::Signed16:
      return smcSigned16(value);
    case Shape::Unsigned16:
      return smcUnsigned16(value);
    case Shape::Unsigned32:
      return smcUnsigned32(value);
    case Shape::Text:
      return isWellFormedUtf8(textOf(value)) ? std::string(textOf(value)) : dump(value);
    case Shape::Dump:
      return dump(value);
    default:
      return fmt::format("{}.{}{:x}{}", value[0], value[1], value[2], smcUnsigned16(value, 4));
  }
}

bool isFixedPoint(std::uint32_t typeCode) {
  return typeCode >> 16 == smcCode("\0\0fp") || typeCode >> 16 == smcCode("\0\0sp");
}

Decoded decodedFixedPoint(std::uint32_t typeCode, DataView value) {
  const double divisor = divisorForSmcType(typeCode);
  if (value.size() != 2 || divisor <= 0) return std::nullopt;
  const bool isSigned = typeCode >> 16 == smcCode("\0\0sp");
  return (isSigned ? static_cast<double>(smcSigned16(value)) : static_cast<double>(smcUnsigned16(value))) / divisor;
}

}  // namespace

std::optional<Value> decodedSmcValue(std::uint32_t typeCode, DataView bytes, std::size_t size) {
  const auto value = bytes.first(std::min(size, bytes.size()));
  const auto* plain = std::ranges::find(kPlainTypes, typeCode, &PlainType::code);
  if (plain != std::ranges::end(kPlainTypes)) {
    if (plain->size != kAnySize && plain->size != size) return std::nullopt;
    return decodedAs(plain->shape, value);
  }
  if (isFixedPoint(typeCode)) return decodedFixedPoint(typeCode, value);
  if (isSmcRecordType(typeCode)) return smcRecordFields(typeCode, bytes, size);
  return kSmcDecodingNotImplemented;
}

}  // namespace vantrell
