// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/ClientTransport.h"

namespace vantrell::host {

/// The requesting side of the wire: D-Bus over a Unix socket or through the system's message bus.
class LinuxClientTransport final : public ClientTransport {
 public:
  Result<std::unique_ptr<ServiceConnection>> connectToAddress(const std::string& address) override;
  Result<std::unique_ptr<ServiceConnection>> connectToServiceOnBus(std::string_view serviceName) override;
  InstallationPlaces installationPlaces() const override {
    return {"/run/vantrell/privilegedtool.socket", "/usr/libexec"};
  }
  Result<std::unique_ptr<FeedbackListener>> makeFeedbackListener(
      std::function<void(const Dictionary&)> handler) override;
  Result<std::unique_ptr<SpawnedService>> spawnService(const std::string& executablePath) override;
};

}  // namespace vantrell::host
