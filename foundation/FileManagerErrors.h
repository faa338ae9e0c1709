// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string_view>

#include "foundation/Error.h"

namespace vantrell {

/// The file manager's error for a failed listing or reading of attributes: Cocoa domain, code by the POSIX error, with
/// NSFilePath (the object that failed) and NSUnderlyingError.
Error fileReadingError(const Error& posixError, std::string_view path);

/// The same for whatever changes objects; `variant`, such as "Remove", is NSUserStringVariant's only element.
Error fileWritingError(const Error& posixError, std::string_view path, std::string_view variant);

}  // namespace vantrell
