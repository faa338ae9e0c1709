// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "foundation/Value.h"

namespace vantrell::host {

/// The IPv6 side of a network service, in the session that it came from, which must outlive it.
class NetworkProtocol {
 public:
  virtual ~NetworkProtocol() = default;

  /// Notes in the session that the protocol be on or off. False when that was not possible.
  [[nodiscard]] virtual bool setEnabled(bool enabled) = 0;
};

/// One network service of the session that it came from, which must outlive it.
class NetworkService {
 public:
  virtual ~NetworkService() = default;

  /// Null when the service does not support IPv6.
  virtual std::unique_ptr<NetworkProtocol> ipv6Protocol() = 0;
};

/// One writer's view of a configuration, read at the first access. Changes stay in the session until they are
/// committed. One thread at a time. Closing gives up what was not committed, and the lock.
///
/// True is success throughout.
class SystemConfigurationSession {
 public:
  virtual ~SystemConfigurationSession() = default;

  /// Keeps every other writer out until `unlock`. Waits for its turn when `wait` is true, else fails at once where
  /// another one holds the lock. Fails also when the session holds the lock already, and when the configuration was
  /// written by another since this session read it (the session is stale).
  [[nodiscard]] virtual bool lock(bool wait) = 0;
  [[nodiscard]] virtual bool unlock() = 0;

  [[nodiscard]] virtual bool setValue(std::string key, Value value) = 0;
  /// Fails where there is no such key.
  [[nodiscard]] virtual bool removeValue(std::string_view key) = 0;

  /// Null when there is no service with that identifier.
  virtual std::unique_ptr<NetworkService> networkService(std::string_view identifier) = 0;

  /// Brings the running system in line with the session's network protocols.
  [[nodiscard]] virtual bool applyChanges() = 0;

  /// Makes the changes durable, all of them or none. Fails without the lock, and, on a host that looks once more, when
  /// another wrote past the lock.
  [[nodiscard]] virtual bool commitChanges() = 0;
};

/// The system configuration database. Safe from any thread.
class SystemConfiguration {
 public:
  virtual ~SystemConfiguration() = default;

  /// A session with the configuration `identifier`, the default one where that is empty. `clientName` tells the
  /// platform who asks. Null when there can't be one.
  virtual std::unique_ptr<SystemConfigurationSession> open(std::string_view clientName,
                                                           std::string_view identifier) = 0;
};

}  // namespace vantrell::host
