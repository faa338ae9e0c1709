// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Result.h"

namespace vantrell::host {

/// Target of the symbolic link `name` in the open folder `folder` (or at a path, with AT_FDCWD), unresolved.
Result<std::string> readLinkTarget(int folder, const char* name);

}  // namespace vantrell::host
