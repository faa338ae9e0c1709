// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell::host {

/// The object `name` in the open folder `folder` (or at a path, with AT_FDCWD), in one call. `extraFlags` are statx's:
/// AT_SYMLINK_NOFOLLOW, AT_EMPTY_PATH. Never triggers an automount and never opens the object.
Result<FileStatus> readFileStatus(int folder, const char* name, int extraFlags);

/// Sets exactly these BSD flags on the object `name` in the open folder `folder` (or at a path, with AT_FDCWD), keeping
/// every inode flag that has no BSD counterpart. Nothing but a regular file or a folder is ever opened: a device or a
/// named pipe may act on being opened.
ErrorOrNil writeFileFlags(int folder, const char* name, FollowLinks follow, std::uint32_t flags);

/// The same for an object that is held already, be it by a descriptor that is a location only.
ErrorOrNil writePinnedFlags(int location, std::uint32_t flags);

}  // namespace vantrell::host
