// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include "host/Mounts.h"

namespace vantrell::tests {

/// One implementation, with a folder on which something is mounted, be it in its imagination.
class WorldWithMount {
 public:
  virtual ~WorldWithMount() = default;
  virtual host::Mounts& mounts() = 0;
};

/// This host's mounts, and a file system that is mounted on `mountPoint` as long as what comes back lives: each host's
/// tests define this. Takes root; throws std::runtime_error where nothing can be mounted.
std::unique_ptr<WorldWithMount> realWorldWithMount(const std::string& mountPoint);

}  // namespace vantrell::tests
