// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include <sys/stat.h>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileStatus.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

// What each host's kernel does in its own way with files that are open. Declared here, defined in every host's folder.

Result<FileStatus> statusOfDescriptor(int descriptor);

/// See DirectoryHandle::openFile.
Result<FileDescriptor> openRegularFile(int folder, const char* name);

/// Returns when content and status have reached the storage device.
ErrorOrNil synchronizeDescriptor(int descriptor);

/// NotPossible: the rest is to be read and written. What is copied by then has moved both files' positions, so that
/// another way goes on from there.
enum class KernelCopy : std::uint8_t { Complete, NotPossible };
Result<KernelCopy> copyInKernel(int source, int target);

/// Whether anyone but its owner and root may write to the open regular file of this status.
bool mayOthersWrite(int descriptor, const struct stat& status);

}  // namespace vantrell::host
