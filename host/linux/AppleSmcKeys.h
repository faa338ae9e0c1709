// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <unordered_map>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "host/SmcDriver.h"
#include "host/linux/AppleSmcAttributes.h"

namespace vantrell::host {

/// Why something was not done, in the terms of the 80-byte record: a call that failed, or a result of the controller.
struct SmcRefusal {
  SmcReturnCode returnCode = kSmcSuccess;
  std::uint8_t result = smc_result::kSuccess;
};
template <class T>
using SmcAttempt = std::expected<T, SmcRefusal>;

SmcRefusal refusalForSmcError(const Error& error);
inline std::unexpected<SmcRefusal> smcRefused(std::uint8_t result) {
  return std::unexpected(SmcRefusal{.result = result});
}

/// Reads keys through the driver's window: an index is stored in "key_at_index", and the other files of that name then
/// show the key with that index.
///
/// The index is one for the whole system, so another process can move the window at any time. Whatever is read is
/// therefore read between two looks at the key's name, and read again when that has changed. (Someone who moves the
/// window away and back between those looks is not noticed.) Not safe from several threads: the caller serialises.
class AppleSmcKeys {
 public:
  struct Key {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    Data value;  // when asked for
  };

  explicit AppleSmcKeys(const AppleSmcAttributes& attributes) : attributes_(attributes) {}

  SmcAttempt<std::uint32_t> codeAtIndex(std::uint32_t index);
  /// "#KEY" comes from "key_count", so that the keys can be counted without the window, which only root may move.
  SmcAttempt<Key> keyInfo(std::uint32_t code);
  SmcAttempt<Key> keyWithValue(std::uint32_t code);

 private:
  SmcAttempt<Key> countAsKey() const;
  SmcAttempt<Key> read(std::uint32_t code, bool withValue);
  SmcAttempt<Key> readWindow(bool withValue) const;
  SmcAttempt<Data> readValue(std::uint32_t size) const;
  SmcAttempt<std::uint32_t> indexOfKey(std::uint32_t code);
  SmcAttempt<std::uint32_t> count() const;
  SmcAttempt<std::uint32_t> number(const std::string& attribute) const;
  SmcAttempt<std::uint32_t> code(const std::string& attribute) const;
  SmcAttempt<std::uint32_t> codeInWindow() const;
  SmcAttempt<std::uint32_t> moveWindow(std::uint32_t index) const;

  const AppleSmcAttributes& attributes_;
  // What a controller's keys are never changes; this spares looking for them again.
  std::unordered_map<std::uint32_t, std::uint32_t> indexesByCode_;
  std::uint32_t nextIndex_ = 0;  // all below it have been looked at
};

}  // namespace vantrell::host
