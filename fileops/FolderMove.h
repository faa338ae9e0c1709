// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Error.h"
#include "foundation/FileManager.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Gives a folder a new last path component and, if asked, leaves an empty one with the same metadata in its place: see
/// fileops/FolderMetadata.h. Of a link to a folder the link moves.
///
/// POSIX errors: 22 for an empty path or name, or a name that is none; 20 (with the path) where no folder is, 17 (with
/// the new path) where the name is taken. Errors of the move and of creating the substitute are the file manager's;
/// with the latter the folder has moved already.
ErrorOrNil moveFolderAtPath(FileManager& fileManager, host::FileSystem& fileSystem, const std::string& path,
                            const std::string& newName, bool creatingEmptySubstitute);

}  // namespace vantrell
