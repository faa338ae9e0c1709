// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <string_view>

#include "core/ClassRegistry.h"
#include "host/Host.h"

namespace vantrell {

/// Where the entry writes what it has to say.
struct StandardStreams {
  std::function<void(std::string_view)> output;
  std::function<void(std::string_view)> error;
};

/// The process's life: checks arguments, principal class, version and privileges, then serves. Returns the exit status.
///
/// - more than one argument: 1, silently
/// - no principal class: 1, said on standard error
/// - one argument: the version line and 0 if it begins with "v", else 1
/// - the executable's version is not the operation set's: 1 after the check for root, a fault in the log
/// - not root: 1, said on standard error and in the log
/// - no implementor: 0, an error in the log
int runPrivilegedTool(int argumentCount, const char* const* arguments, host::Host& host, const ClassRegistry& classes,
                      const StandardStreams& streams);

}  // namespace vantrell
