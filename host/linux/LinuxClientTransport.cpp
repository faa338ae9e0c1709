// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxClientTransport.h"

#include <system_error>
#include <utility>

#include "host/linux/ClientConnection.h"
#include "host/linux/LinuxFeedbackListener.h"
#include "host/linux/SpawnedHelper.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

Result<std::unique_ptr<ServiceConnection>> LinuxClientTransport::connectToAddress(const std::string& address) try {
  return ClientConnection::toAddress(address);
} catch (const std::system_error& error) {
  return errnoFailure(error.code().value());
}

Result<std::unique_ptr<ServiceConnection>> LinuxClientTransport::connectToServiceOnBus(
    std::string_view serviceName) try {
  return ClientConnection::toServiceOnBus(serviceName);
} catch (const std::system_error& error) {
  return errnoFailure(error.code().value());
}

Result<std::unique_ptr<FeedbackListener>> LinuxClientTransport::makeFeedbackListener(
    std::function<void(const Dictionary&)> handler) {
  return LinuxFeedbackListener::make(std::move(handler));
}

Result<std::unique_ptr<SpawnedService>> LinuxClientTransport::spawnService(const std::string& executablePath) {
  return SpawnedHelper::start(executablePath);
}

}  // namespace vantrell::host
