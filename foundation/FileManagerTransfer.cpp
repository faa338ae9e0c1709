// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// Moving and linking: what has a source and a destination.

#include <optional>
#include <utility>

#include "foundation/FileManager.h"
#include "foundation/FileManagerCopy.h"
#include "foundation/FileManagerErrors.h"
#include "foundation/FileManagerPrivateFolder.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"

namespace vantrell {

using host::FollowLinks;
using host::Location;

namespace {

// A path without a last component of its own ("/", "..") is that of something that exists, or of nothing.
Result<Location> locateNewObject(host::FileSystem& fileSystem, const std::string& path) {
  auto location = fileSystem.locate(path);
  if (!location && fileSystem.status(path, FollowLinks::No)) return posixFailure(posix::kExists);
  if (!location) return location;
  const auto status = location->folder->statusOf(location->name.c_str(), FollowLinks::No);
  if (status) return posixFailure(posix::kExists);
  if (!status.error().isPosix(posix::kNoEntry)) return failure(status.error());
  return location;
}

Result<Location> locateObject(host::FileSystem& fileSystem, const std::string& path) {
  auto location = fileSystem.locate(path);
  if (!location) return location;
  const auto status = location->folder->statusOf(location->name.c_str(), FollowLinks::No);
  if (!status) return failure(status.error());
  return location;
}

// Into a private folder first, where nobody can exchange what is being made, and then to its place in one step.
std::optional<FileManagerCopy::Failure> copyToOtherVolume(host::DirectoryHandle& folder, const std::string& name,
                                                          const std::string& path, host::DirectoryHandle& toFolder,
                                                          const std::string& newName) {
  const auto workshop = FileManagerPrivateFolder::makeIn(toFolder);
  if (!workshop) return FileManagerCopy::Failure{workshop.error(), path};
  auto& made = (*workshop)->handle();
  if (auto failure = FileManagerCopy(folder, path, made).copy(name.c_str(), newName.c_str())) return failure;
  if (auto error = made.rename(newName.c_str(), toFolder, newName.c_str()))
    return FileManagerCopy::Failure{*error, path};
  return std::nullopt;
}

}  // namespace

ErrorOrNil FileManager::moveItemAtPath(const std::string& path, const std::string& toPath) {
  const FileTransfer transfer{path, toPath, "Move"};
  const auto source = locateObject(fileSystem_, path);
  if (!source) return fileTransferError(source.error(), path, transfer);
  const auto destination = locateNewObject(fileSystem_, toPath);
  if (!destination) return fileTransferError(destination.error(), path, transfer);
  return moveItem(*source->folder, source->name, path, *destination->folder, destination->name, toPath);
}

ErrorOrNil FileManager::moveItem(host::DirectoryHandle& folder, const std::string& name, const std::string& path,
                                 host::DirectoryHandle& toFolder, const std::string& newName,
                                 const std::string& toPath) {
  const FileTransfer transfer{path, toPath, "Move"};
  const auto error = folder.rename(name.c_str(), toFolder, newName.c_str());
  if (!error) return std::nullopt;
  if (!error->isPosix(posix::kCrossDevice)) return fileTransferError(*error, path, transfer);
  if (const auto failure = copyToOtherVolume(folder, name, path, toFolder, newName))
    return fileTransferError(failure->error, failure->path, transfer);
  const auto removal = removeItem(folder, name, path);
  if (!removal) return std::nullopt;
  const auto* failed = removal->userInfo().find(NSFilePathErrorKey);
  const auto* cause = removal->userInfo().find(NSUnderlyingErrorKey);
  return fileTransferError(cause && cause->asError() ? *cause->asError() : *removal,
                           failed && failed->asString() ? *failed->asString() : path, transfer);
}

ErrorOrNil FileManager::linkItemAtPath(const std::string& path, const std::string& toPath) {
  const FileTransfer transfer{path, toPath, "Link"};
  const auto source = locateObject(fileSystem_, path);
  if (!source) return fileTransferReadingError(source.error(), path, transfer);
  const auto destination = locateNewObject(fileSystem_, toPath);
  if (!destination) return fileTransferError(destination.error(), path, transfer);
  const auto error = destination->folder->makeLink(destination->name.c_str(), *source->folder, source->name.c_str());
  return error ? ErrorOrNil(fileTransferError(*error, path, transfer)) : std::nullopt;
}

}  // namespace vantrell
