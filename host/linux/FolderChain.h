// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <span>
#include <string>

#include <sys/types.h>

#include "foundation/Result.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

struct FolderChain {
  std::string start;  // a path that is trusted: links in it are followed
  std::span<const char* const> components;
  bool followsLinks = false;  // whether a component may be a link
  mode_t modeOfNewOnes = 0755;
};

enum class MissingFolders : bool { AreErrors, AreCreated };

/// Opens `start`, which must exist, and each component in the one before it. A missing one is POSIX error 2, unless it
/// is to be created.
Result<FileDescriptor> openFolderChain(const FolderChain& chain, MissingFolders missing);

}  // namespace vantrell::host
