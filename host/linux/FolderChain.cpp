// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FolderChain.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

Result<FileDescriptor> openFolderChain(const FolderChain& chain, MissingFolders missing) {
  constexpr int kFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  FileDescriptor folder(open(chain.start.c_str(), kFlags));
  if (!folder) return errnoFailure();
  for (const auto* component : chain.components) {
    const int flags = chain.followsLinks ? kFlags : kFlags | O_NOFOLLOW;
    FileDescriptor next(openat(folder.get(), component, flags));
    if (!next && errno == ENOENT && missing == MissingFolders::AreCreated) {
      const bool isNew = mkdirat(folder.get(), component, chain.modeOfNewOnes) == 0;
      if (!isNew && errno != EEXIST) return errnoFailure();
      next.reset(openat(folder.get(), component, flags));
      // The mode is what is asked for, whatever the process's creation mask.
      if (next && isNew && fchmod(next.get(), chain.modeOfNewOnes) != 0) return errnoFailure();
    }
    if (!next) return errnoFailure();
    folder = std::move(next);
  }
  return folder;
}

}  // namespace vantrell::host
