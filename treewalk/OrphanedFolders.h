// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <string>

#include "foundation/Log.h"
#include "foundation/Result.h"
#include "host/FileSystem.h"
#include "treewalk/KnownOwners.h"

namespace vantrell {

/// Whether a folder is empty or holds nothing that is owned by a known user, as far as it lies on the folder's own file
/// system; false when it can't be read, or the status of something in it. `path` is shown for the folder. POSIX error
/// 89 when `isCancelled`, asked with every hundredth object, said so before that was known.
Result<bool> isEmptyOrHoldsOrphansOnly(host::FileSystem& fileSystem, const Log& log,
                                       std::shared_ptr<host::DirectoryHandle> folder, const std::string& path,
                                       KnownOwners& owners, const std::function<bool()>& isCancelled);

}  // namespace vantrell
