// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include "foundation/Data.h"

namespace vantrell {

/// The clients that are registered, by process identifier, each with the key that enciphers its requests. When the last
/// one leaves, the helper ends. Safe from any thread.
class ClientRegistry {
 public:
  static constexpr std::size_t kKeySize = 24;
  using Key = std::array<std::uint8_t, kKeySize>;

  /// Registers, replacing an earlier key. A key that is missing or of another length leaves no entry.
  void setKeyForClient(std::int32_t pid, const std::optional<Data>& key);

  /// Removes the entry, if there is one, and returns how many clients remain.
  std::size_t removeClient(std::int32_t pid);

  /// Removes the entry and keeps the registry locked for good: whoever uses it from here on waits until the process
  /// ends, which the caller sees to. So nobody can register with a helper that is about to be gone.
  void removeClientAndStayLocked(std::int32_t pid);

  std::optional<Key> keyForClient(std::uint64_t pid) const;

  std::vector<std::int32_t> registeredClients() const;

 private:
  std::map<std::int32_t, Key> keysByClientPIDs_;
  mutable std::mutex clientSetLock_;
};

}  // namespace vantrell
