// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Result.h"

namespace vantrell::host {

/// The names of all attributes but those that hold access control lists, of the object that `path` leads to. None
/// where the file system has no attributes.
Result<std::vector<std::string>> listExtendedAttributes(const char* path);

/// The value of one attribute of the object that `path` leads to; POSIX error 93 when there is none.
Result<Data> readExtendedAttribute(const char* path, const char* name);

/// Whether this is one of the attributes that hold access control lists.
bool holdsAccessControlList(const std::string& name) noexcept;

}  // namespace vantrell::host
