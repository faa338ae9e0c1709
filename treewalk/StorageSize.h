// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "foundation/Result.h"
#include "host/DirectoryHandle.h"

namespace vantrell {

/// The sum of the logical sizes, in bytes, of all objects below a folder: on whatever file systems, links with their
/// own size, what can't be read left out. POSIX error 89 when `isCancelled` (which may be empty), asked with the 100th,
/// 200th … object by one thread at a time, said so.
///
/// Two threads share the folders out: to a sum the order does not matter.
Result<std::uint64_t> storageSize(std::unique_ptr<host::DirectoryHandle> folder,
                                  const std::function<bool()>& isCancelled);

}  // namespace vantrell
