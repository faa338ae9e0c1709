// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Result.h"

namespace vantrell::host {

/// The absolute path of what lies at `path`, without links, doubled slashes and "..". POSIX error 2 where nothing is,
/// as for a path with a zero character in it.
Result<std::string> resolvedPath(const std::string& path);

}  // namespace vantrell::host
