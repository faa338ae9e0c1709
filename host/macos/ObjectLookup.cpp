// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/ObjectLookup.h"

#include <utility>

#include <fcntl.h>
#include <sys/param.h>

#include "foundation/PosixCodes.h"
#include "host/macos/FileStatusCalls.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/LinkTarget.h"

namespace vantrell::host {

bool canBeHeld(FileType type) noexcept {
  return type == FileType::Regular || type == FileType::Directory || type == FileType::SymbolicLink;
}

// What was a file may be a pipe by now: that doesn't block.
FileDescriptor holdObject(int folder, const char* name, FollowLinks follow) {
  const int noFollow = follow == FollowLinks::No ? O_SYMLINK : 0;
  return FileDescriptor(openat(folder, name, O_EVTONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | noFollow));
}

// Systems that don't know O_SEARCH take it for O_DIRECTORY, and ask for permission to read.
FileDescriptor openPlace(int folder, const char* path) {
  return FileDescriptor(openat(folder, path, O_SEARCH | O_DIRECTORY | O_CLOEXEC));
}

Result<ObjectName> locateObject(int folder, const std::string& path, FollowLinks follow) {
  ObjectName object;
  std::string rest = path;
  for (int links = 0; links <= MAXSYMLINKS; ++links) {
    auto split = splitPath(rest);
    if (!split) return posixFailure(posix::kInvalidArgument);
    FileDescriptor place = openPlace(object.folder ? object.folder.get() : folder, split->folder.c_str());
    if (!place) return errnoFailure();
    object = {std::move(place), std::move(split->name)};
    if (follow == FollowLinks::No) return object;
    const auto status = readFileStatus({object.folder.get(), object.name.c_str()});
    if (!status) return failure(status.error());
    if (!status->isSymbolicLink()) return object;
    auto target = readLinkTarget(object.folder.get(), object.name.c_str());
    if (!target) return failure(target.error());
    rest = std::move(*target);
  }
  return posixFailure(posix::kTooManyLinks);
}

}  // namespace vantrell::host
