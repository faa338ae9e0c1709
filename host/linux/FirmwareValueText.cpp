// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FirmwareValueText.h"

#include <cstddef>
#include <string>
#include <string_view>

#include "foundation/Unicode.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kShortestOwnText = 2;  // bytes, the zero byte included
constexpr std::size_t kShortestOtherTerminatedText = 3;
constexpr std::size_t kShortestOtherBareText = 4;

bool isPrintable(std::string_view text) {
  if (!isWellFormedUtf8(text)) return false;
  for (const char character : text)
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) return false;
  return true;
}

bool isTerminated(DataView bytes) {
  return !bytes.empty() && bytes.back() == 0;
}

std::string textFrom(const Value& value) {
  if (const auto* text = value.asString()) return *text;
  const auto* number = value.asNumber();
  if (!number) return {};
  if (number->kind() == Number::Kind::Boolean) return number->boolValue() ? "true" : "false";
  return number->description();
}

}  // namespace

Value valueFromFirmwareBytes(DataView bytes, FirmwareVariableOwner owner) {
  const bool isOwn = owner == FirmwareVariableOwner::Vendor;
  const bool terminated = isTerminated(bytes);
  const auto text = textOf(terminated ? bytes.first(bytes.size() - 1) : bytes);
  const auto shortest = terminated ? (isOwn ? kShortestOwnText : kShortestOtherTerminatedText) : kShortestOtherBareText;
  const bool isText = (terminated || !isOwn) && bytes.size() >= shortest && isPrintable(text);
  if (isText) return text;
  return Data(bytes.begin(), bytes.end());
}

Data firmwareBytesFromValue(const Value& value, const std::optional<Data>& before, FirmwareVariableOwner owner) {
  if (const auto* data = value.asData()) return *data;
  auto text = textFrom(value);
  const bool wasBareText = before && !isTerminated(*before) && valueFromFirmwareBytes(*before, owner).asString();
  // A variable without a single byte would be one that is deleted.
  if (!wasBareText || text.empty()) text += '\0';
  return {text.begin(), text.end()};
}

}  // namespace vantrell::host
