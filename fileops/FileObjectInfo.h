// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Dictionary.h"
#include "host/FileSystem.h"

namespace vantrell {

/// What clients are told of an object, in exactly five entries: "Path", "Type" (see fileTypeText), "Size" (bytes),
/// "ModificationDate", "Mode" (permission bits). `status` is that of the object itself, a link included.
Dictionary fileObjectInfo(const std::string& path, const host::FileStatus& status);

}  // namespace vantrell
