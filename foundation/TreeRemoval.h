// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Error.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Removes the folder at `path`, not a link to one, with all that it contains; see FileManager::removeItemAtPath, whose
/// errors these are. `path` has no slash at its end.
ErrorOrNil removeTree(host::FileSystem& fileSystem, const std::string& path);

}  // namespace vantrell
