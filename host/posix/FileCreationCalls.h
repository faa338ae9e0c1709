// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include "foundation/Error.h"
#include "host/FileStatus.h"

namespace vantrell::host {

// All make `name` in the open folder `folder`; see DirectoryHandle's functions for creation. Where the file system
// keeps no modes they are what it makes of them. Declared here, defined in every host's folder.

ErrorOrNil createFolder(int folder, const char* name, std::uint16_t permissions);
ErrorOrNil createSpecialFile(int folder, const char* name, const FileStatus& like);

/// See DirectoryHandle::rename.
ErrorOrNil renameWithoutReplacing(int folder, const char* name, int newFolder, const char* newName);

}  // namespace vantrell::host
