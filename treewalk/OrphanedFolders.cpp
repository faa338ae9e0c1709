// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/OrphanedFolders.h"

#include <cstddef>
#include <utility>

#include "foundation/PosixCodes.h"
#include "treewalk/QELDirectoryEnumerator.h"
#include "treewalk/SearchRecords.h"

namespace vantrell {

Result<bool> isEmptyOrHoldsOrphansOnly(host::FileSystem& fileSystem, const Log& log,
                                       std::shared_ptr<host::DirectoryHandle> folder, const std::string& path,
                                       KnownOwners& owners, const std::function<bool()>& isCancelled) {
  const auto first = folder->next();
  if (!first) return false;
  if (!*first) return true;
  folder->rewind();
  const auto status = folder->status();
  if (!status) return false;
  QELDirectoryEnumerator walk(std::move(folder), log, path, status->device);
  const ShownObjects shown(fileSystem, walk.basePrefix());
  std::size_t count = 0;
  while (const auto* object = walk.next()) {
    const auto objectStatus = shown.statusOf(*object);
    if (!objectStatus || owners.contains(objectStatus->owner)) return false;
    if (++count % SearchResults::kObjectsPerLook == 0 && isCancelled && isCancelled())
      return posixFailure(posix::kCanceled);
  }
  return true;
}

}  // namespace vantrell
