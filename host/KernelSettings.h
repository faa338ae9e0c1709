// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string_view>

#include "foundation/Error.h"

namespace vantrell::host {

/// Named variables of the running kernel, "kern.maxproc" or "net.ipv4.ip_forward": the names are the host's own. Safe
/// from any thread.
class KernelSettings {
 public:
  virtual ~KernelSettings() = default;

  /// Sets the variable. A name that no variable bears, and one that could not be any variable's (empty, or with a
  /// slash, a zero byte or an empty component in it), is POSIX error 2; what else fails is the kernel's error.
  virtual ErrorOrNil set(std::string_view name, std::int64_t value) = 0;
};

}  // namespace vantrell::host
