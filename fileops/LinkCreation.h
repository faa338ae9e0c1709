// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Error.h"
#include "foundation/FileManager.h"

namespace vantrell {

/// A hard link to what is at the path `toTarget`, or a symbolic link with that very text, checked by nobody. Errors are
/// the file manager's.
ErrorOrNil createLinkAtPath(FileManager& fileManager, const std::string& path, const std::string& toTarget,
                            bool asHardLink);

}  // namespace vantrell
