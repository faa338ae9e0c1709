// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/ClientRegistry.h"

#include <algorithm>
#include <limits>

namespace vantrell {

void ClientRegistry::setKeyForClient(std::int32_t pid, const std::optional<Data>& key) {
  const std::lock_guard lock(clientSetLock_);
  if (!key || key->size() != kKeySize) {
    keysByClientPIDs_.erase(pid);
    return;
  }
  std::ranges::copy(*key, keysByClientPIDs_[pid].begin());
}

std::size_t ClientRegistry::removeClient(std::int32_t pid) {
  const std::lock_guard lock(clientSetLock_);
  keysByClientPIDs_.erase(pid);
  return keysByClientPIDs_.size();
}

void ClientRegistry::removeClientAndStayLocked(std::int32_t pid) {
  clientSetLock_.lock();
  keysByClientPIDs_.erase(pid);
}

std::optional<ClientRegistry::Key> ClientRegistry::keyForClient(std::uint64_t pid) const {
  // Tokens carry 64 bits; no such identifier was ever registered.
  if (pid > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) return std::nullopt;
  const std::lock_guard lock(clientSetLock_);
  const auto found = keysByClientPIDs_.find(static_cast<std::int32_t>(pid));
  return found == keysByClientPIDs_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::int32_t> ClientRegistry::registeredClients() const {
  const std::lock_guard lock(clientSetLock_);
  std::vector<std::int32_t> clients;
  clients.reserve(keysByClientPIDs_.size());
  for (const auto& [pid, key] : keysByClientPIDs_) clients.push_back(pid);
  return clients;
}

}  // namespace vantrell
