// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string_view>

#include "foundation/Error.h"

namespace vantrell {

/// The file manager's error for a failed listing or reading of attributes: Cocoa domain, code by the POSIX error, with
/// NSFilePath (the object that failed) and NSUnderlyingError.
Error fileReadingError(const Error& posixError, std::string_view path);

/// The same for whatever creates an object or changes its attributes.
Error fileWritingError(const Error& posixError, std::string_view path);

/// The same for removals; `variant`, such as "Remove", is NSUserStringVariant's only element.
Error fileWritingError(const Error& posixError, std::string_view path, std::string_view variant);

/// What leads from one path to another. NSFilePath is `failed`, and NSSourceFilePathErrorKey and NSDestinationFilePath
/// stand beside it.
struct FileTransfer {
  std::string_view source;
  std::string_view destination;
  std::string_view variant;  // "Move", "Link"
};
Error fileTransferError(const Error& posixError, std::string_view failed, const FileTransfer& transfer);
/// The same with the code of a failed reading.
Error fileTransferReadingError(const Error& posixError, std::string_view failed, const FileTransfer& transfer);

}  // namespace vantrell
