// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Result.h"

namespace vantrell::host {

/// What is mounted where. Safe from any thread.
class Mounts {
 public:
  virtual ~Mounts() = default;

  /// The path of the mount point that holds the object at `path`, links followed, as the kernel spells it: absolute,
  /// without links, and without a slash at its end unless it is "/". POSIX errors without user info: 2 where nothing
  /// is or where the mount point is out of this process's sight, and others.
  virtual Result<std::string> mountPointNameForPath(const std::string& path) = 0;
};

}  // namespace vantrell::host
