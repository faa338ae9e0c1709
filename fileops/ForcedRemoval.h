// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>

#include "fileops/FileDeletionErrors.h"
#include "foundation/Error.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Why an object is still there.
struct ForcedRemovalFailure {
  std::optional<FileDeletionErrorCode> reason;  // one of the first three, or nothing when the system refused
  Error error;                                  // POSIX error without user info
};

/// Removes one object, an empty folder or a link itself: whiteouts are refused, then system flags, and user flags are
/// cleared. What was examined is an entry of the folder that it is removed from, wherever the path has come to lead.
std::optional<ForcedRemovalFailure> removeInSpiteOfUserFlags(host::FileSystem& fileSystem, const std::string& path);

}  // namespace vantrell
