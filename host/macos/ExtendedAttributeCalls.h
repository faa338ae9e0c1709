// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/ObjectHandle.h"

namespace vantrell::host {

// The attributes of what a descriptor holds: a regular file, a folder or a symbolic link; the kernel keeps none for
// other objects. See ObjectHandle's functions.

Result<std::vector<std::string>> listExtendedAttributes(int object, FSCompression compression);
/// A resource fork is one of them and can be long: POSIX error 27 beyond 256 MiB.
Result<Data> readExtendedAttribute(int object, const std::string& name);
ErrorOrNil writeExtendedAttribute(int object, const std::string& name, DataView value);
ErrorOrNil removeExtendedAttribute(int object, const std::string& name, FSCompression compression);

/// Whether this is the attribute that holds access control lists, or no name at all.
bool isNoAttributeName(const std::string& name) noexcept;

}  // namespace vantrell::host
