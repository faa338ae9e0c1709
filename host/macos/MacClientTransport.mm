// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacClientTransport.h"

#include <utility>

#include "foundation/PosixCodes.h"
#include "host/macos/FoundationValues.h"
#include "host/macos/ListenerEndpoint.h"
#include "host/macos/MacFeedbackListener.h"
#include "host/macos/MacServiceConnection.h"

namespace vantrell::host {

namespace {

constexpr std::string_view kMachScheme = "mach:";

Result<std::unique_ptr<ServiceConnection>> connectToMachService(std::string_view name, NSXPCConnectionOptions options) {
  // A name with a zero byte would be another one to the kernel.
  if (name.empty() || name.find('\0') != std::string_view::npos) return posixFailure(posix::kInvalidArgument);
  @autoreleasepool {
    return MacServiceConnection::open([[NSXPCConnection alloc] initWithMachServiceName:stringFrom(name)
                                                                               options:options]);
  }
}

}  // namespace

Result<std::unique_ptr<ServiceConnection>> MacClientTransport::connectToAddress(const std::string& address) {
  if (!address.starts_with(kMachScheme)) return posixFailure(posix::kInvalidArgument);
  return connectToMachService(std::string_view(address).substr(kMachScheme.size()), 0);
}

Result<std::unique_ptr<ServiceConnection>> MacClientTransport::connectToServiceOnBus(std::string_view serviceName) {
  return connectToMachService(serviceName, NSXPCConnectionPrivileged);
}

Result<std::unique_ptr<ServiceConnection>> MacClientTransport::connectToEndpoint(std::unique_ptr<Endpoint> endpoint) {
  const auto* named = dynamic_cast<const ListenerEndpoint*>(endpoint.get());
  if (!named || !named->get()) return posixFailure(posix::kInvalidArgument);
  @autoreleasepool {
    return MacServiceConnection::open([[NSXPCConnection alloc] initWithListenerEndpoint:named->get()]);
  }
}

Result<std::unique_ptr<FeedbackListener>> MacClientTransport::makeFeedbackListener(
    std::function<void(const Dictionary&)> handler) {
  @autoreleasepool {
    return std::make_unique<MacFeedbackListener>(std::move(handler));
  }
}

Result<std::unique_ptr<SpawnedService>> MacClientTransport::spawnService(const std::string&) {
  return posixFailure(posix::kNotSupported);
}

}  // namespace vantrell::host
