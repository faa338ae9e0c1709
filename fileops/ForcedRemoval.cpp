// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/ForcedRemoval.h"

#include <cstdint>
#include <functional>

#include "foundation/PosixCodes.h"

namespace vantrell {

using host::FollowLinks;
namespace file_flags = host::file_flags;

namespace {

constexpr std::uint32_t kUserFlags = file_flags::kUserImmutable | file_flags::kUserAppend;
constexpr std::uint32_t kSystemFlags = file_flags::kSystemImmutable | file_flags::kSystemAppend;

using Failure = std::optional<ForcedRemovalFailure>;

Failure refused(const Error& error) {
  return ForcedRemovalFailure{std::nullopt, error};
}
Failure withstood(FileDeletionErrorCode reason) {
  return ForcedRemovalFailure{reason, Error::posix(posix::kInputOutput)};
}

Failure removeExamined(const Result<host::FileStatus>& status,
                       const std::function<ErrorOrNil(std::uint32_t flags)>& setFlags,
                       const std::function<ErrorOrNil(bool isDirectory)>& remove) {
  if (!status) return refused(status.error());
  if (status->type == host::FileType::Whiteout) return withstood(FileDeletionErrorCode::Whiteout);
  if (status->flags & kSystemFlags) return withstood(FileDeletionErrorCode::SystemFlags);
  if ((status->flags & kUserFlags) && setFlags(status->flags & ~kUserFlags))
    return withstood(FileDeletionErrorCode::UserFlagsNotCleared);
  const auto error = remove(status->isDirectory());
  return error ? refused(*error) : std::nullopt;
}

// A path that ends in "/", "." or ".." names no entry. Its removal comes to nothing, and this says why.
Failure removeByPath(host::FileSystem& fileSystem, const std::string& path) {
  return removeExamined(
      fileSystem.status(path, FollowLinks::No),
      [&](std::uint32_t flags) { return fileSystem.setFlags(path, flags, FollowLinks::No); },
      [&](bool isDirectory) { return isDirectory ? fileSystem.removeDirectory(path) : fileSystem.removeFile(path); });
}

}  // namespace

std::optional<ForcedRemovalFailure> removeInSpiteOfUserFlags(host::FileSystem& fileSystem, const std::string& path) {
  if (path.empty()) return refused(Error::posix(posix::kInvalidArgument));
  const auto location = fileSystem.locate(path);
  if (!location && location.error().isPosix(posix::kInvalidArgument)) return removeByPath(fileSystem, path);
  if (!location) return refused(location.error());
  auto& folder = *location->folder;
  const auto* name = location->name.c_str();
  return removeExamined(
      folder.statusOf(name, FollowLinks::No),
      [&](std::uint32_t flags) { return folder.setFlagsOf(name, flags, FollowLinks::No); },
      [&](bool isDirectory) { return isDirectory ? folder.removeDirectory(name) : folder.removeFile(name); });
}

}  // namespace vantrell
