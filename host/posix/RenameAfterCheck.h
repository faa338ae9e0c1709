// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Error.h"

namespace vantrell::host {

/// See DirectoryHandle::rename, for file systems whose renaming doesn't know how not to replace. A folder, and a file
/// where there are no further names for one, may there be overtaken by somebody who takes the new name between check
/// and renaming.
ErrorOrNil renameAfterCheck(int folder, const char* name, int newFolder, const char* newName);

}  // namespace vantrell::host
