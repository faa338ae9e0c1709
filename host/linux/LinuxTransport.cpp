// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxTransport.h"

#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <systemd/sd-daemon.h>

#include "host/linux/BusListener.h"
#include "host/linux/DescriptorEndpoint.h"
#include "host/linux/PeerListener.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

LinuxTransport::LinuxTransport(SystemLog& systemLog, const TransportLimits& limits)
    : systemLog_(systemLog), limits_(limits), feedbackThreads_(systemLog, limits) {}

Result<std::unique_ptr<Listener>> LinuxTransport::makeListener(std::string_view serviceName) {
  const int passed = sd_listen_fds(0);
  if (passed < 0) return errnoFailure(-passed);
  if (passed == 0) return makeListenerOnBus(serviceName);
  const int isListening = sd_is_socket_unix(SD_LISTEN_FDS_START, SOCK_STREAM, 1, nullptr, 0);
  if (isListening < 0) return errnoFailure(-isListening);
  if (isListening == 0) return errnoFailure(ENOTSOCK);
  return makeListenerOnSocket(FileDescriptor(SD_LISTEN_FDS_START));
}

std::unique_ptr<Listener> LinuxTransport::makeListenerOnSocket(FileDescriptor listeningSocket) {
  return std::make_unique<PeerListener>(std::move(listeningSocket), systemLog_, limits_);
}

std::unique_ptr<Listener> LinuxTransport::makeListenerOnBus(std::string_view serviceName) {
  return std::make_unique<BusListener>(serviceName, systemLog_, limits_);
}

Result<std::shared_ptr<FeedbackConnection>> LinuxTransport::connectionToEndpoint(std::unique_ptr<Endpoint> endpoint) {
  auto* named = dynamic_cast<DescriptorEndpoint*>(endpoint.get());
  FileDescriptor socket = named ? named->take() : FileDescriptor();
  if (!socket) return errnoFailure(EINVAL);
  return feedbackThreads_.connect(std::move(socket));
}

}  // namespace vantrell::host
