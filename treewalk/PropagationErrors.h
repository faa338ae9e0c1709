// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string_view>

#include "foundation/Error.h"

namespace vantrell::propagation_error {

// What setting and propagating rights fails with: domain of the operation set, code as noted, and as user info a
// description, a recovery suggestion, the object's path and the error underneath. `path` may be any bytes.

Error accessControlListNotSet(std::string_view path, const Error& underlying);   // 12
Error attributesNotRead(std::string_view path, const Error& underlying);         // 13
Error ownerNotChanged(std::string_view path, const Error& underlying);           // 14
Error permissionsNotChanged(std::string_view path, const Error& underlying);     // 15
Error accessControlListNotRead(std::string_view path, const Error& underlying);  // 23

/// Code 22. `posixError` is what the system said; underneath stands the file manager's reading of it.
Error folderNotRead(std::string_view path, const Error& posixError);

/// POSIX error 22 with the path: an object that lends its owner's identity to whoever runs it is not given to another.
Error setIdentityObjectNotReowned(std::string_view path);

}  // namespace vantrell::propagation_error
