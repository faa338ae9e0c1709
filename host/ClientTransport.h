// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "foundation/Value.h"
#include "host/Transport.h"

namespace vantrell::host {

/// A client's place for feedback: the exported object, and the endpoint that names it to the service. Good for one
/// request; letting it go ends the connection, but not from within its handler.
class FeedbackListener {
 public:
  virtual ~FeedbackListener() = default;

  /// Waits until the service has closed its end and all messages have been handed over, or `limit` has passed.
  /// True when it was closed.
  virtual bool waitUntilClosed(std::chrono::milliseconds limit) = 0;
};

/// A client's connection to the service. Safe from any thread: several requests may be under way at once, and a
/// cancellation goes out while another thread waits for its answer. Where the service is gone or does not speak the
/// protocol the calls fail with a POSIX error (54 connection reset, 57 not connected, 100 protocol, 22 refused as
/// malformed).
class ServiceConnection {
 public:
  virtual ~ServiceConnection() = default;

  virtual Result<std::string> getVersionString() = 0;
  /// The salt.
  virtual Result<Data> registerClientWithPID(std::int32_t pid) = 0;
  virtual ErrorOrNil unregisterClientWithPID(std::int32_t pid) = 0;

  /// Waits for the answer, however long the operation takes. The outer result tells whether there was one.
  /// `feedback` may be null; one that served a request before, and arguments that the wire has no form for (a null
  /// placeholder, more than 15 levels; an error, on macOS), are POSIX error 22.
  virtual Result<ErrorOrNil> performPrivilegedOperation(std::uint64_t code, DataView token, FeedbackListener* feedback,
                                                        const Array& arguments) = 0;
  virtual ErrorOrNil cancelPrivilegedOperation(std::uint64_t code, DataView token, const Array& arguments) = 0;

  /// Waits until the service has closed the connection, or `limit` has passed. True when it was closed.
  virtual bool waitUntilClosed(std::chrono::milliseconds limit) = 0;
};

/// A helper started for one client on a private socket, as a service manager would start it.
class SpawnedService {
 public:
  virtual ~SpawnedService() = default;

  /// The address to connect to.
  virtual const std::string& address() const noexcept = 0;

  /// Waits for the helper's end and returns its exit status (128 + signal number where a signal ended it); nothing when
  /// `limit` passes first.
  virtual std::optional<int> waitForExit(std::chrono::milliseconds limit) = 0;
};

/// Where what is installed for the whole system lies.
struct InstallationPlaces {
  std::string socketPath;    // where the service manager listens; empty where a service is reached by its name only
  std::string helperFolder;  // of the helper's executable
};

/// How messages leave this process: the requesting side.
class ClientTransport {
 public:
  virtual ~ClientTransport() = default;

  /// `address` is in the host's notation; "unix:path=PATH" on Linux, "mach:NAME" on macOS. Any other is POSIX error 22;
  /// the rest is what the system says (2 where nothing is there, 61 where nobody listens), or 60 where the service does
  /// not answer in time.
  virtual Result<std::unique_ptr<ServiceConnection>> connectToAddress(const std::string& address) = 0;

  /// Through the system's message bus (on macOS: launchd), by the service's name.
  virtual Result<std::unique_ptr<ServiceConnection>> connectToServiceOnBus(std::string_view serviceName) = 0;

  virtual InstallationPlaces installationPlaces() const = 0;

  /// `handler` is called for each message, in order, on a thread of the listener's.
  virtual Result<std::unique_ptr<FeedbackListener>> makeFeedbackListener(
      std::function<void(const Dictionary&)> handler) = 0;

  /// Starts the helper at `executablePath` with a listening socket in a folder of its own that only this user may
  /// enter. The helper is ended and the folder removed when the object goes. POSIX error 2 or 13 where it can't be
  /// executed, 45 on a host where no such socket can serve (macOS).
  virtual Result<std::unique_ptr<SpawnedService>> spawnService(const std::string& executablePath) = 0;
};

}  // namespace vantrell::host
