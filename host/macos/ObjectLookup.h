// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include "foundation/Result.h"
#include "host/FileStatus.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

/// The folder that holds an object, held as a place, and the object's name there.
struct ObjectName {
  FileDescriptor folder;
  std::string name;
};

/// Holds a regular file, a folder or, unfollowed, a symbolic link by a descriptor that is for events only: it neither
/// reads nor writes and keeps no volume from being unmounted, but the kernel takes it wherever it takes a file. Errors
/// of other objects: 102 for a socket; pipes and devices would be opened.
FileDescriptor holdObject(int folder, const char* name, FollowLinks follow);

/// Whether holdObject is for objects of this type.
bool canBeHeld(FileType type) noexcept;

/// The folder is not opened for reading, where the system can do without, and its entries can't be enumerated.
FileDescriptor openPlace(int folder, const char* path);

/// Separates the last component of `path` (from the open folder `folder`, or the working folder with AT_FDCWD); where
/// links are followed, of what it leads to in the end. POSIX error 22 where there is no such component, 62 for too many
/// links.
Result<ObjectName> locateObject(int folder, const std::string& path, FollowLinks follow);

}  // namespace vantrell::host
