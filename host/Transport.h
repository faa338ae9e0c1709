// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "foundation/UniqueFunction.h"
#include "foundation/Value.h"

namespace vantrell {

/// Answers a request, from any thread, at most once; an answer to a client that has gone is dropped. Destroying it
/// unused leaves the client without an answer.
template <class T>
using Reply = UniqueFunction<void(T)>;

namespace host {
class Endpoint;
}

/// What the service offers to its clients. Messages of one connection are delivered one after the other, in the order
/// sent; those of different connections at the same time, on the transport's threads.
class QELPrivilegedToolProtocol {
 public:
  virtual ~QELPrivilegedToolProtocol() = default;

  virtual void getVersionStringUsingReply(Reply<std::string> reply) = 0;
  virtual void registerClientWithPID(std::int32_t pid, Reply<Data> saltReply) = 0;
  virtual void unregisterClientWithPID(std::int32_t pid) = 0;
  /// `feedbackEndpoint` may be null; `arguments` is nothing when the client sent none (a nil array).
  virtual void performPrivilegedOperation(std::uint64_t code, Data token,
                                          std::unique_ptr<host::Endpoint> feedbackEndpoint,
                                          std::optional<Array> arguments, Reply<ErrorOrNil> reply) = 0;
  virtual void cancelPrivilegedOperation(std::uint64_t code, Data previouslyAuthorizedWithToken,
                                         std::optional<Array> arguments) = 0;
};

/// What a client offers to the service for the length of one operation.
class QELPrivilegedOperationFeedbackProtocol {
 public:
  virtual ~QELPrivilegedOperationFeedbackProtocol() = default;
  virtual void processPrivilegedOperationFeedback(const Dictionary& message) = 0;
};

namespace host {

/// The far end of a connection yet to be made: where a client waits for feedback.
class Endpoint {
 public:
  virtual ~Endpoint() = default;
};

/// A connection that the listener has taken in, before it delivers anything.
class Connection {
 public:
  virtual ~Connection() = default;

  /// `object` must outlive the listener. Set before `resume`.
  virtual void setExportedObject(QELPrivilegedToolProtocol& object) = 0;
  /// Begins the delivery of messages. A connection that is never resumed delivers none and is closed when it is let go.
  virtual void resume() = 0;
};

class Listener;

class ListenerDelegate {
 public:
  virtual ~ListenerDelegate() = default;
  /// True to keep the connection (after giving it an exported object and resuming it), false to refuse it.
  virtual bool listenerShouldAcceptNewConnection(Listener& listener, Connection& newConnection) = 0;
};

/// Takes in clients of one named service. Letting it go ends its connections and waits for their threads: never from
/// one of these.
class Listener {
 public:
  virtual ~Listener() = default;

  /// Held weakly; must outlive the listener or be set to nullptr. Waits while the present delegate is being asked, so
  /// not from within it.
  virtual void setDelegate(ListenerDelegate* delegate) = 0;
  /// Begins to take in connections, on threads of its own. May fail where the name can't be had.
  virtual ErrorOrNil resume() = 0;
  /// Takes in no clients until it is resumed.
  virtual void suspend() = 0;
  /// Takes in no more clients, for good; those that are in stay in. What waits in the service manager's socket stays
  /// there for the next start.
  virtual void invalidate() = 0;
};

/// The service's connection to a client's feedback endpoint.
///
/// What waits for the client is bounded (64 MiB; not on macOS before 10.15): at the bound the sender waits. A client
/// that takes nothing for 30 seconds while the bound is reached counts as gone: its messages are dropped from then on,
/// which is logged once. Safe from any thread; messages arrive in the order sent. Letting the connection go invalidates
/// it.
class FeedbackConnection : public QELPrivilegedOperationFeedbackProtocol {
 public:
  /// Begins to talk to the endpoint. Messages sent before are kept until then.
  virtual void resume() = 0;
  /// Sends nothing until it is resumed or invalidated.
  virtual void suspend() = 0;
  /// Takes no more messages and does not wait; what was accepted before is still delivered to a client that reads, then
  /// it closes.
  virtual void invalidate() = 0;

  /// True once the client has gone or counts as gone.
  virtual bool isClientGone() const noexcept = 0;

  /// Sends one message, one way.
  void processPrivilegedOperationFeedback(const Dictionary& message) override = 0;
};

/// How messages reach this process: the service's side.
class Transport {
 public:
  virtual ~Transport() = default;

  /// Where the service manager passed a socket the listener serves that, else it claims `serviceName`.
  virtual Result<std::unique_ptr<Listener>> makeListener(std::string_view serviceName) = 0;

  virtual Result<std::shared_ptr<FeedbackConnection>> connectionToEndpoint(std::unique_ptr<Endpoint> endpoint) = 0;
};

}  // namespace host
}  // namespace vantrell
