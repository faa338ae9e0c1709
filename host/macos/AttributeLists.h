// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include <sys/attr.h>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/macos/ObjectPlace.h"

namespace vantrell::host {

// The kernel's attribute lists: the one way to flags and security of an entry of an open folder, which needs neither a
// path nor an open object. `attribute` is one of the ATTR_CMN constants.

/// Sets one attribute to `value`, laid out as setattrlist(2) has it. POSIX error 45 where the file system has no such
/// attribute.
ErrorOrNil writeAttribute(const ObjectPlace& place, attrgroup_t attribute, DataView value);

/// The content of an attribute that is of variable size; nothing where the object has none or the file system has no
/// such attribute. `maximumSize` is the most that it can have; POSIX error 84 for more.
Result<std::optional<Data>> readVariableAttribute(const ObjectPlace& place, attrgroup_t attribute,
                                                  std::size_t maximumSize);

/// Whether the open folder is the topmost one of a mounted file system. False where that can't be told.
bool isMountPoint(int folder);

}  // namespace vantrell::host
