// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "client/HelperLocation.h"
#include "client/OperationCancellation.h"
#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "foundation/Value.h"
#include "host/Host.h"

namespace vantrell {

/// The requesting side: a connection to the service, this process's registration there, and the tokens that prove its
/// requests. Once registered, safe from any thread; several operations may be under way at once.
class PrivilegedToolClient {
 public:
  using FeedbackHandler = std::function<void(const Dictionary& message)>;

  /// How long feedback may stay away after the answer before the rest of it is given up.
  static constexpr std::chrono::seconds kFeedbackPatience{10};

  /// Connects, or starts the helper and connects to it; failures are POSIX errors with texts for people. `operations`
  /// and `host` must outlive the client.
  static Result<std::unique_ptr<PrivilegedToolClient>> connect(HelperLocation location,
                                                               const QELPrivilegedToolOperationSet& operations,
                                                               host::Host& host);
  PrivilegedToolClient(const PrivilegedToolClient&) = delete;
  PrivilegedToolClient& operator=(const PrivilegedToolClient&) = delete;
  /// Unregisters if need be.
  ~PrivilegedToolClient();

  Result<std::string> versionString();

  /// Registers this process and derives its key from the helper's executable and the salt. A helper that ends at this
  /// moment, because its last client left, is asked for again. POSIX error 79 with texts for people when the executable
  /// yields no key.
  ErrorOrNil registerClient();

  /// Performs an operation and waits for its answer, which is the inner result; the outer one fails when there was
  /// none. `handler` gets the feedback, on another thread, one message after the other; all of it has been handled by
  /// the time this returns, unless none came for kFeedbackPatience. `cancellation` may be null.
  Result<ErrorOrNil> perform(std::uint64_t code, const Array& arguments, const FeedbackHandler& handler = {},
                             OperationCancellation* cancellation = nullptr);

  /// Leaves the service; the last client to do so ends it. Does nothing unless registered.
  ErrorOrNil unregisterClient();

  /// Leaves the service and ends a helper of this client's own at once, whatever other threads are waiting for.
  void abandon();

  /// The exit status of a helper of this client's own; nothing when there is none or it still runs after `limit`.
  std::optional<int> waitForHelperExit(std::chrono::milliseconds limit);

 private:
  PrivilegedToolClient(HelperLocation location, const QELPrivilegedToolOperationSet& operations, host::Host& host);

  Result<std::unique_ptr<host::ServiceConnection>> openConnection();
  Result<Data> registerAtService();
  Result<Data> tokenFor(DataView envelope) const;
  void sendCancellation(std::uint64_t code, DataView envelope, const Array& arguments) const;
  std::shared_ptr<host::ServiceConnection> connection() const;
  std::shared_ptr<host::SpawnedService> spawned() const;

  HelperLocation location_;
  const QELPrivilegedToolOperationSet& operations_;
  host::Host& host_;

  mutable std::mutex lock_;  // guards what follows; never held while a message is sent
  std::shared_ptr<host::SpawnedService> spawned_;
  std::shared_ptr<host::ServiceConnection> connection_;
  std::optional<Data> key_;  // as long as registered
};

}  // namespace vantrell
