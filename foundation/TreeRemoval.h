// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Error.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Removes the folder `name` of `parent`, not a link to one, with all that it contains; see
/// FileManager::removeItemAtPath, whose errors these are. `path` is that of the folder, for messages.
ErrorOrNil removeTree(host::DirectoryHandle& parent, const std::string& name, const std::string& path);

}  // namespace vantrell
