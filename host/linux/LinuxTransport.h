// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string_view>

#include "host/SystemLog.h"
#include "host/Transport.h"
#include "host/linux/LinuxFeedbackConnection.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/TransportLimits.h"

namespace vantrell::host {

/// The service's side of the wire: D-Bus over a socket that the service manager passed, or on the system's message bus.
class LinuxTransport final : public Transport {
 public:
  /// `systemLog` must outlive the transport, its listeners and its feedback connections.
  explicit LinuxTransport(SystemLog& systemLog, const TransportLimits& limits = {});

  /// Descriptor 3, where sd_listen_fds(3) says that one was passed; it has to be a listening Unix stream socket.
  Result<std::unique_ptr<Listener>> makeListener(std::string_view serviceName) override;
  /// On a socket that listens already.
  std::unique_ptr<Listener> makeListenerOnSocket(FileDescriptor listeningSocket);
  /// On the system's message bus, whatever was passed.
  std::unique_ptr<Listener> makeListenerOnBus(std::string_view serviceName);

  Result<std::shared_ptr<FeedbackConnection>> connectionToEndpoint(std::unique_ptr<Endpoint> endpoint) override;

 private:
  SystemLog& systemLog_;
  const TransportLimits limits_;
  FeedbackThreads feedbackThreads_;
};

}  // namespace vantrell::host
