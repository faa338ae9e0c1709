// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileStatus.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

// All make `name` in the open folder `folder`; see DirectoryHandle's functions for creation. Where the file system
// keeps no modes they are what it makes of them. In a folder with a default list the mode is the new list's mask, which
// holds its entries back until somebody says otherwise.

/// Open for writing.
Result<FileDescriptor> createRegularFile(int folder, const char* name, std::uint16_t permissions);
ErrorOrNil createFolder(int folder, const char* name, std::uint16_t permissions);
ErrorOrNil createSpecialFile(int folder, const char* name, const FileStatus& like);

/// See DirectoryHandle::rename.
ErrorOrNil renameWithoutReplacing(int folder, const char* name, int newFolder, const char* newName);

/// The same on file systems whose renaming doesn't know how not to replace. A folder, and a file where there are no
/// further names for one, may there be overtaken by somebody who takes the new name between check and renaming.
ErrorOrNil renameAfterCheck(int folder, const char* name, int newFolder, const char* newName);

}  // namespace vantrell::host
