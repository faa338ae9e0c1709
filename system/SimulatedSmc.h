// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "foundation/Data.h"
#include "host/SmcDriver.h"

namespace vantrell {

/// A complete controller in memory, for trying things out where there is none. Safe from any thread.
class SimulatedSmc final : public host::SmcDriver {
 public:
  /// A key as the controller keeps it. The results say what each command is answered with instead of success.
  struct Key {
    std::uint32_t code = 0;
    std::uint32_t type = 0;
    Data value;  // up to 32 bytes; what is beyond is cut off
    std::uint8_t infoResult = host::smc_result::kSuccess;
    std::uint8_t readResult = host::smc_result::kSuccess;
    std::uint8_t writeResult = host::smc_result::kSuccess;
  };

  /// `key` is four characters. A type of three ends in a zero byte.
  static Key readWriteKey(std::string_view key, std::string_view type, Data value);
  static Key readOnlyKey(std::string_view key, std::string_view type, Data value);
  static Key writeOnlyKey(std::string_view key, std::string_view type, Data value);

  /// Keys of every type that there is, some of them read-only, write-only or out of order, with values that look like
  /// a portable computer's.
  static std::vector<Key> everyKindOfKey();

  /// "#KEY", which counts the keys and itself, is added to `keys`. They are kept in ascending order of their codes, as
  /// real controllers do.
  explicit SimulatedSmc(std::vector<Key> keys = everyKindOfKey());

  std::expected<std::unique_ptr<host::SmcConnection>, host::SmcReturnCode> connect() override;

  /// What is stored under a key; empty for a key that there is not.
  Data valueOfKey(std::string_view key) const;

 private:
  class Connection;

  host::SmcRecord answerTo(const host::SmcRecord& request);
  void answerForKey(const host::SmcRecord& request, Key& key, host::SmcRecord& answer);
  Key* find(std::uint32_t code) noexcept;

  mutable std::mutex lock_;  // guards the values of keys_
  std::vector<Key> keys_;
};

}  // namespace vantrell
