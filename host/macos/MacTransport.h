// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "host/SystemLog.h"
#include "host/Transport.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

class FeedbackSender;

/// A listener that has no name: whoever holds its endpoint may connect.
class AnonymousListener : public Listener {
 public:
  virtual std::unique_ptr<Endpoint> endpoint() = 0;
};

/// The service's side of XPC. Threads are the platform's: each connection has a queue of its own.
///
/// A request that is dropped without an answer fails at the client, whose system tells it that no reply will come. A
/// message that does not decode (see ToolProtocols.h) is the platform's to deal with: nothing here sees it. Answers
/// that wait for a client are the platform's alone and not bounded here; what feedback waits is bounded from
/// macOS 10.15 on (see FeedbackSender.h).
class MacTransport final : public Transport {
 public:
  /// `systemLog` must outlive the transport, its listeners and its feedback connections.
  explicit MacTransport(SystemLog& systemLog, const TransportLimits& limits = {});
  /// Ends all feedback connections at once.
  ~MacTransport() override;

  /// The Mach service of that name, which launchd must know from the helper's list.
  Result<std::unique_ptr<Listener>> makeListener(std::string_view serviceName) override;
  std::unique_ptr<AnonymousListener> makeAnonymousListener();

  /// POSIX error 22 for an endpoint of another host, or none.
  Result<std::shared_ptr<FeedbackConnection>> connectionToEndpoint(std::unique_ptr<Endpoint> endpoint) override;

 private:
  SystemLog& systemLog_;
  const TransportLimits limits_;
  std::mutex mutex_;
  std::vector<std::weak_ptr<FeedbackSender>> senders_;
};

}  // namespace vantrell::host
