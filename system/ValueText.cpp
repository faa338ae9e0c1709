// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "system/ValueText.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "foundation/PosixCodes.h"
#include "foundation/PropertyList.h"
#include "foundation/Unicode.h"

namespace vantrell {
namespace {

constexpr std::size_t kShortestGroup = 3;  // "%FF": what the number of bytes is judged by
constexpr std::uint32_t kLargestByte = 0xFF;

// The platform's set of white space and new lines: Unicode's separators, and the control characters that break lines.
bool isSpace(char32_t character) {
  constexpr std::array<char32_t, 8> kOthers = {0x20, 0x85, 0xA0, 0x1680, 0x202F, 0x205F, 0x3000, 0x2028};
  if ((character >= 0x09 && character <= 0x0D) || (character >= 0x2000 && character <= 0x200A) || character == 0x2029)
    return true;
  for (const auto other : kOthers)
    if (character == other) return true;
  return false;
}

std::string_view withoutLeadingSpace(std::string_view text) {
  while (!text.empty()) {
    const auto character = decodeUtf8(text);
    if (!isSpace(character.codePoint)) break;
    text.remove_prefix(character.length);
  }
  return text;
}

std::size_t utf16Length(std::string_view text) {
  std::size_t length = 0;
  while (!text.empty()) {
    const auto character = decodeUtf8(text);
    length += character.codePoint > 0xFFFF ? 2 : 1;
    text.remove_prefix(character.length);
  }
  return length;
}

std::optional<std::uint32_t> hexDigit(char character) {
  if (character >= '0' && character <= '9') return static_cast<std::uint32_t>(character - '0');
  if (character >= 'a' && character <= 'f') return static_cast<std::uint32_t>(character - 'a' + 10);
  if (character >= 'A' && character <= 'F') return static_cast<std::uint32_t>(character - 'A' + 10);
  return std::nullopt;
}

/// Takes "%" and the digits behind it off the text.
std::optional<std::uint8_t> takeGroup(std::string_view& text) {
  if (!text.starts_with('%')) return std::nullopt;
  text.remove_prefix(1);
  std::uint32_t byte = 0;
  std::size_t digits = 0;
  for (; digits < text.size(); ++digits) {
    const auto digit = hexDigit(text[digits]);
    if (!digit) break;
    byte = byte * 16 + *digit;
    if (byte > kLargestByte) return std::nullopt;
  }
  text.remove_prefix(digits);
  return digits > 0 ? std::optional(static_cast<std::uint8_t>(byte)) : std::nullopt;
}

std::optional<Value> dataFrom(std::string_view text) {
  const auto most = utf16Length(text) / kShortestGroup;
  if (most == 0) return std::nullopt;
  Data bytes;
  for (text = withoutLeadingSpace(text); bytes.size() < most && !text.empty(); text = withoutLeadingSpace(text)) {
    const auto byte = takeGroup(text);
    if (!byte) return std::nullopt;
    bytes.push_back(*byte);
  }
  // White space alone is no run of groups.
  return bytes.empty() ? std::nullopt : std::optional<Value>(std::move(bytes));
}

std::int64_t leadingInteger(std::string_view text) {
  text = withoutLeadingSpace(text);
  const bool isNegative = text.starts_with('-');
  if (text.starts_with('+')) {
    text.remove_prefix(1);
    if (text.starts_with('-')) return 0;
  }
  std::int64_t number = 0;
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  using Limits = std::numeric_limits<std::int64_t>;
  if (problem == std::errc::result_out_of_range) return isNegative ? Limits::min() : Limits::max();
  return problem == std::errc() ? number : 0;
}

}  // namespace

CoreFoundationType coreFoundationTypeOf(const Value& value) {
  if (value.asString()) return CoreFoundationType::String;
  if (value.asData()) return CoreFoundationType::Data;
  const auto* number = value.asNumber();
  if (!number) return CoreFoundationType::Other;
  return number->kind() == Number::Kind::Boolean ? CoreFoundationType::Boolean : CoreFoundationType::Number;
}

std::optional<Value> copyCoreFoundationValueWithType(CoreFoundationType type, std::string_view forValueInString) {
  switch (type) {
    case CoreFoundationType::Boolean:
      if (forValueInString != "true" && forValueInString != "false") return std::nullopt;
      return Value(forValueInString == "true");
    case CoreFoundationType::Number:
      return Value(leadingInteger(forValueInString));
    case CoreFoundationType::String:
      return Value(forValueInString);
    case CoreFoundationType::Data:
      return dataFrom(forValueInString);
    case CoreFoundationType::Other:
      break;
  }
  return std::nullopt;
}

Result<std::optional<Value>> propertyListValueFromText(std::string_view text) {
  if (text.empty()) return std::optional<Value>();
  auto list = propertyListFromData(bytesOf(text));
  if (list) return std::optional(std::move(list->root));
  return failure(
      Error(std::string(kPosixErrorDomain), posix::kInvalidArgument, Dictionary{{NSUnderlyingErrorKey, list.error()}}));
}

}  // namespace vantrell
