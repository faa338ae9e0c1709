// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell::host {

/// See FileSystem::loadFile. `path` holds no zero byte.
Result<std::unique_ptr<FileContents>> loadPosixFile(const std::string& path, std::uint64_t maximumSize);

}  // namespace vantrell::host
