// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "host/ClientTransport.h"

namespace vantrell::host {

/// The requesting side of XPC. launchd starts the helper when the first message for it arrives; making a connection
/// asks the service for its version, to tell whether there is one.
///
/// Arguments may be made of property-list types only: an error among them is POSIX error 22, as what else has no form.
/// Requests that the service refuses as malformed or too many are answered with POSIX error 22 or 55 as if by the
/// operation: XPC has no other place for it.
class MacClientTransport final : public ClientTransport {
 public:
  /// "mach:NAME" is a Mach service in this process's own namespace, an agent's for instance; any other address is POSIX
  /// error 22. Nothing of that name is 2, no answer within 25 seconds 60.
  Result<std::unique_ptr<ServiceConnection>> connectToAddress(const std::string& address) override;
  /// A daemon's Mach service, which only the system itself can have registered. Errors as above.
  Result<std::unique_ptr<ServiceConnection>> connectToServiceOnBus(std::string_view serviceName) override;
  /// An anonymous listener's. POSIX error 22 for an endpoint of another host.
  Result<std::unique_ptr<ServiceConnection>> connectToEndpoint(std::unique_ptr<Endpoint> endpoint);

  InstallationPlaces installationPlaces() const override { return {"", "/Library/PrivilegedHelperTools"}; }

  Result<std::unique_ptr<FeedbackListener>> makeFeedbackListener(
      std::function<void(const Dictionary&)> handler) override;

  /// POSIX error 45: only launchd gives a helper its Mach service, and XPC has no private socket. Load the helper's
  /// list into launchd, and connect by the service's name.
  Result<std::unique_ptr<SpawnedService>> spawnService(const std::string& executablePath) override;
};

}  // namespace vantrell::host
