// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "foundation/Result.h"
#include "host/Host.h"

namespace vantrell {

/// What the command line says about the way to the service; at most one of the first three.
struct ConnectionOptions {
  std::optional<std::string> address;
  bool bus = false;
  std::optional<std::string> spawn;
  std::optional<std::string> helper;
};

/// The way to the service, decided.
struct HelperLocation {
  enum class Way : std::uint8_t { Address, Bus, Spawn };
  Way way = Way::Address;
  std::string target;      // an address, the service's name on the bus, or the executable to start
  std::string executable;  // the executable that the service runs: the client's key derives from its content
};

/// What was asked for; without a wish the service manager's socket where it exists, and else, for root, a helper of
/// this command's own; on a host without such sockets the service's name. The executable is the one named, else the one
/// to be started, else the helper beside this program, else the installed one. An error (POSIX 2 with texts for people)
/// when no way is left.
Result<HelperLocation> locateHelper(const ConnectionOptions& options, const QELPrivilegedToolOperationSet& operations,
                                    host::Host& host);

}  // namespace vantrell
