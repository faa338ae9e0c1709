// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>

#include "foundation/Result.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

// D-Bus addresses of the form "unix:path=PATH", bytes outside [-0-9A-Za-z_/.\*] escaped as %XX.

std::string unixAddressOfPath(std::string_view path);

/// POSIX error 22 for any other address.
Result<std::string> pathOfUnixAddress(std::string_view address);

/// A stream socket connected to, or listening at, a path. POSIX error 63 for a path that no socket can have.
Result<FileDescriptor> connectToSocket(const std::string& path);
Result<FileDescriptor> listenOnSocket(const std::string& path);

}  // namespace vantrell::host
