// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "client/HelperLocation.h"

#include <utility>

#include "foundation/PosixCodes.h"

namespace vantrell {

namespace {

using Way = HelperLocation::Way;

bool exists(const std::string& path, host::FileSystem& fileSystem) {
  return fileSystem.status(path, host::FollowLinks::Yes).has_value();
}

bool isFile(const std::string& path, host::FileSystem& fileSystem) {
  const auto status = fileSystem.status(path, host::FollowLinks::Yes);
  return status && status->type == host::FileType::Regular;
}

std::string defaultHelper(const QELPrivilegedToolOperationSet& operations, host::Host& host) {
  const auto name = operations.fileNameForHelper();
  if (const auto self = host.mainBundle->executablePath()) {
    const auto beside = self->substr(0, self->rfind('/') + 1) + name;
    if (isFile(beside, *host.fileSystem)) return beside;
  }
  return host.clientTransport->installationPlaces().helperFolder + "/" + name;
}

Error noWay(std::string description, std::string suggestion) {
  return {std::string(kPosixErrorDomain), posix::kNoEntry,
          Dictionary{{NSLocalizedDescriptionKey, std::move(description)},
                     {NSLocalizedRecoverySuggestionErrorKey, std::move(suggestion)}}};
}

}  // namespace

Result<HelperLocation> locateHelper(const ConnectionOptions& options, const QELPrivilegedToolOperationSet& operations,
                                    host::Host& host) {
  if (options.spawn) return HelperLocation{Way::Spawn, *options.spawn, options.helper.value_or(*options.spawn)};

  auto executable = options.helper ? *options.helper : defaultHelper(operations, host);
  if (options.bus) return HelperLocation{Way::Bus, operations.serviceIdentifierForHelper(), std::move(executable)};
  if (options.address) return HelperLocation{Way::Address, *options.address, std::move(executable)};

  const std::string socket = host.clientTransport->installationPlaces().socketPath;
  if (socket.empty()) return HelperLocation{Way::Bus, operations.serviceIdentifierForHelper(), std::move(executable)};
  if (exists(socket, *host.fileSystem)) {
    return HelperLocation{Way::Address, "unix:path=" + socket, std::move(executable)};
  }
  if (host.currentProcess->effectiveUserID() != 0) {
    return failure(noWay("The service is not available: there is no socket at " + socket + ".",
                         "Start the service's socket, name another way to it with --address or --bus, or run this "
                         "command as root, which can start a helper of its own."));
  }
  if (!isFile(executable, *host.fileSystem)) {
    return failure(noWay(
        "The service is not available: there is neither a socket at " + socket + " nor a helper at " + executable + ".",
        "Start the service's socket, name another way to it with --address or --bus, or name the "
        "helper to start with --spawn."));
  }
  return HelperLocation{Way::Spawn, executable, executable};
}

}  // namespace vantrell
