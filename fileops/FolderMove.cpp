// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/FolderMove.h"

#include <memory>
#include <utility>

#include "fileops/ExtendedAttributes.h"
#include "fileops/FolderMetadata.h"
#include "foundation/FileManagerErrors.h"
#include "foundation/FileManagerPrivateFolder.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"

namespace vantrell {

using host::FollowLinks;

namespace {

constexpr std::uint16_t kFolderPermissions = 0755;

struct Remembered {
  host::FileStatus status;
  ExtendedAttributeSet attributes;
  std::unique_ptr<host::AccessControlList> list;

  void imposeOn(host::ObjectHandle& object) const { enforceFolderMetadata(status, attributes, list.get(), object); }
};

Result<Remembered> metadataOf(const host::ObjectHandle& folder, const std::string& path) {
  Remembered metadata;
  const auto status = folder.status();
  if (!status) return failure(posixErrorAtPath(status.error(), path));
  metadata.status = *status;
  const auto permissions = folder.ownPermissions(*status);
  if (!permissions) return failure(posixErrorAtPath(permissions.error(), path));
  metadata.status.permissions = *permissions;
  auto attributes = extendedAttributesOf(folder);
  if (!attributes) return failure(posixErrorAtPath(attributes.error(), path));
  metadata.attributes = std::move(*attributes);
  if (auto list = folder.accessControlList()) metadata.list = std::move(*list);
  return metadata;
}

// Furnished where nobody else can get at it: with the old folder's owner comes power over the new one.
ErrorOrNil createSubstitute(host::DirectoryHandle& parent, const char* name, const Remembered& metadata) {
  const auto workshop = FileManagerPrivateFolder::makeIn(parent);
  if (!workshop) return workshop.error();
  auto& folder = (*workshop)->handle();
  if (auto error = folder.makeDirectory(name, kFolderPermissions)) return error;
  const auto made = folder.openObject(name, FollowLinks::No);
  if (!made) return made.error();
  metadata.imposeOn(**made);
  return folder.rename(name, parent, name);
}

}  // namespace

ErrorOrNil moveFolderAtPath(FileManager& fileManager, host::FileSystem& fileSystem, const std::string& path,
                            const std::string& newName, bool creatingEmptySubstitute) {
  if (path.empty() || newName.empty() || newName.find('/') != std::string::npos)
    return Error::posix(posix::kInvalidArgument);
  bool isDirectory = false;
  if (!fileManager.fileExistsAtPath(path, &isDirectory) || !isDirectory)
    return posixErrorAtPath(Error::posix(posix::kNotDirectory), path);
  const auto destination = stringByAppendingPathComponent(stringByDeletingLastPathComponent(path), newName);
  if (fileManager.fileExistsAtPath(destination)) return posixErrorAtPath(Error::posix(posix::kExists), destination);

  const auto location = fileSystem.locate(path);
  if (!location) return fileTransferError(location.error(), path, {path, destination, "Move"});
  auto& parent = *location->folder;
  const auto* name = location->name.c_str();
  // The one object that is read from and written to, whatever its path comes to lead to.
  const auto folder = parent.openObject(name, FollowLinks::Yes);
  if (!folder) return posixErrorAtPath(folder.error(), path);
  const auto metadata = metadataOf(**folder, path);
  if (!metadata) return metadata.error();
  if (!metadata->status.isDirectory()) return posixErrorAtPath(Error::posix(posix::kNotDirectory), path);

  if (auto error = fileManager.moveItem(parent, location->name, path, parent, newName, destination)) return error;
  metadata->imposeOn(**folder);
  if (!creatingEmptySubstitute) return std::nullopt;
  const auto error = createSubstitute(parent, name, *metadata);
  return error ? ErrorOrNil(fileWritingError(*error, path)) : std::nullopt;
}

}  // namespace vantrell
