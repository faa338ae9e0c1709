// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/AppleSmcKeys.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "foundation/PosixCodes.h"

namespace vantrell::host {

namespace {

constexpr std::uint32_t kKeyCount = 0x234B4559;      // "#KEY"
constexpr std::uint32_t kTypeOfCount = 0x75693332;   // "ui32"
constexpr std::uint32_t kMaximumKeyCount = 1 << 16;  // far beyond any controller's
constexpr std::size_t kCodeLength = 4;
constexpr int kAttempts = 8;

std::unexpected<SmcRefusal> failed(SmcReturnCode code) {
  return std::unexpected(SmcRefusal{.returnCode = code});
}

std::string_view withoutNewline(std::string_view text) {
  if (text.ends_with('\n')) text.remove_suffix(1);
  return text;
}

}  // namespace

SmcRefusal refusalForSmcError(const Error& error) {
  const bool forbidden = error.isPosix(posix::kAccessDenied) || error.isPosix(posix::kNotPermitted);
  return {.returnCode = forbidden ? kSmcNotPrivileged : kSmcInputOutputError};
}

SmcAttempt<std::uint32_t> AppleSmcKeys::number(const std::string& attribute) const {
  const auto content = attributes_.read(attribute);
  if (!content) return std::unexpected(refusalForSmcError(content.error()));
  const auto text = withoutNewline(*content);
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return failed(kSmcInputOutputError);
  return value;
}

// The driver prints codes up to a zero byte: "ui8" is one that ends in such a byte.
SmcAttempt<std::uint32_t> AppleSmcKeys::code(const std::string& attribute) const {
  const auto content = attributes_.read(attribute);
  if (!content) return std::unexpected(refusalForSmcError(content.error()));
  const auto text = withoutNewline(*content);
  if (text.size() > kCodeLength) return failed(kSmcInputOutputError);
  std::uint32_t value = 0;
  for (std::size_t i = 0; i < kCodeLength; ++i) {
    value = value << 8 | (i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0U);
  }
  return value;
}

SmcAttempt<std::uint32_t> AppleSmcKeys::codeInWindow() const {
  return code("key_at_index_name");
}

SmcAttempt<std::uint32_t> AppleSmcKeys::count() const {
  const auto keys = number("key_count");
  if (keys && *keys > kMaximumKeyCount) return failed(kSmcInputOutputError);
  return keys;
}

/// Gives the index back.
SmcAttempt<std::uint32_t> AppleSmcKeys::moveWindow(std::uint32_t index) const {
  const auto error = attributes_.write("key_at_index", std::to_string(index));
  if (!error) return index;
  if (error->isPosix(posix::kInvalidArgument)) return smcRefused(smc_result::kNoSuchIndex);
  return std::unexpected(refusalForSmcError(*error));
}

SmcAttempt<std::uint32_t> AppleSmcKeys::codeAtIndex(std::uint32_t index) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (const auto moved = moveWindow(index); !moved) return moved;
    const auto name = codeInWindow();
    if (!name) return name;
    const auto indexThen = number("key_at_index");
    if (!indexThen) return indexThen;
    if (*indexThen != index) continue;
    indexesByCode_.insert_or_assign(*name, index);
    return name;
  }
  return failed(kSmcInputOutputError);
}

SmcAttempt<std::uint32_t> AppleSmcKeys::indexOfKey(std::uint32_t code) {
  const auto known = indexesByCode_.find(code);
  if (known != indexesByCode_.end()) return known->second;
  const auto keys = count();
  if (!keys) return keys;
  for (; nextIndex_ < *keys; ++nextIndex_) {
    const auto name = codeAtIndex(nextIndex_);
    if (!name) return name;
    if (*name == code) return nextIndex_++;
  }
  return smcRefused(smc_result::kKeyNotFound);
}

SmcAttempt<AppleSmcKeys::Key> AppleSmcKeys::countAsKey() const {
  const auto keys = number("key_count");
  if (!keys) return std::unexpected(keys.error());
  Data value;
  for (int shift = 24; shift >= 0; shift -= 8) value.push_back(static_cast<std::uint8_t>(*keys >> shift));
  return Key{.type = kTypeOfCount, .size = static_cast<std::uint32_t>(value.size()), .value = std::move(value)};
}

// The driver hands on every refusal of the controller as an input/output error; a value that can only be written is
// the likely reason. It reads none that is longer than a record's.
SmcAttempt<Data> AppleSmcKeys::readValue(std::uint32_t size) const {
  if (size > SmcRecord().bytes.size()) return smcRefused(smc_result::kNotReadable);
  const auto content = attributes_.read("key_at_index_data");
  if (!content && content.error().isPosix(posix::kInputOutput)) return smcRefused(smc_result::kNotReadable);
  if (!content) return std::unexpected(refusalForSmcError(content.error()));
  if (content->size() != size) return failed(kSmcInputOutputError);
  const auto bytes = bytesOf(*content);
  return Data(bytes.begin(), bytes.end());
}

SmcAttempt<AppleSmcKeys::Key> AppleSmcKeys::readWindow(bool withValue) const {
  const auto type = code("key_at_index_type");
  if (!type) return std::unexpected(type.error());
  const auto size = number("key_at_index_data_length");
  if (!size) return std::unexpected(size.error());
  Key key{.type = *type, .size = *size, .value = {}};
  if (!withValue) return key;
  auto value = readValue(*size);
  if (!value) return std::unexpected(value.error());
  key.value = std::move(*value);
  return key;
}

// A failure counts only once the window is known to have shown the right key all the while.
SmcAttempt<AppleSmcKeys::Key> AppleSmcKeys::read(std::uint32_t code, bool withValue) {
  const auto index = indexOfKey(code);
  if (!index) return std::unexpected(index.error());
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (const auto moved = moveWindow(*index); !moved) return std::unexpected(moved.error());
    const auto before = codeInWindow();
    if (!before) return std::unexpected(before.error());
    if (*before != code) continue;
    auto key = readWindow(withValue);
    const auto after = codeInWindow();
    if (!after) return std::unexpected(after.error());
    if (*after == code) return key;
  }
  indexesByCode_.clear();
  nextIndex_ = 0;
  return failed(kSmcInputOutputError);
}

SmcAttempt<AppleSmcKeys::Key> AppleSmcKeys::keyInfo(std::uint32_t code) {
  return code == kKeyCount ? countAsKey() : read(code, false);
}

SmcAttempt<AppleSmcKeys::Key> AppleSmcKeys::keyWithValue(std::uint32_t code) {
  return code == kKeyCount ? countAsKey() : read(code, true);
}

}  // namespace vantrell::host
