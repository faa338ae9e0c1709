// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/FileStatus.h"

namespace vantrell::host {

/// Where a call finds its object: what a descriptor holds, or an entry of the open folder (with AT_FDCWD: a path).
/// Refers to its arguments.
struct ObjectPlace {
  int descriptor;
  const char* name = nullptr;  // null for what the descriptor holds
  FollowLinks follow = FollowLinks::No;
};

}  // namespace vantrell::host
