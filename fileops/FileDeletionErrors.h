// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>

#include "foundation/Error.h"

namespace vantrell {

/// Codes of the file-deletion domain: why an object withstood its removal.
enum class FileDeletionErrorCode : std::int64_t {
  Whiteout = 1,
  UserFlagsNotCleared = 2,
  SystemFlags = 3,
  SystemIntegrityProtection = 4,
  PrivacyControl = 5,
};

std::string fileDeletionErrorDomain();

/// Carries NSFilePath, and NSUnderlyingError where there is one.
Error fileDeletionError(FileDeletionErrorCode code, const std::string& path, const ErrorOrNil& underlying = {});

/// A file-deletion error as the client is told it: in the operation set's domain, with description, recovery-suggestion
/// template and the path as its parameter, beside the user info it had. One without user info stays without, a code
/// that isn't listed becomes 0, and errors of other domains stay as they are.
Error privilegedOperationErrorForFileDeletionError(const Error& error);

}  // namespace vantrell
