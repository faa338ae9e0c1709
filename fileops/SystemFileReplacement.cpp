// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/SystemFileReplacement.h"

#include <memory>
#include <utility>

#include "catalogue/ErrorModel.h"
#include "catalogue/OperationArguments.h"
#include "foundation/FileManagerErrors.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"

namespace vantrell {

using host::DirectoryHandle;
using host::FollowLinks;

namespace {

constexpr char kBackupExtension[] = ".backup";
constexpr std::uint16_t kWhileBeingWritten = 0600;

// Everything else that the file manager tells is set on the new file.
constexpr const char* kNotCarried[] = {NSFileSize,
                                       NSFileModificationDate,
                                       NSFileReferenceCount,
                                       "NSFileDeviceIdentifier",
                                       NSFileSystemNumber,
                                       NSFileSystemFileNumber,
                                       NSFileType,
                                       "NSFileBusy",
                                       "NSFileExtendedAttributes"};

Error blockedByFolder(const std::string& backupPath) {
  const auto shown = displayablePath(backupPath);
  return privilegedOperationError(5, "The location for the backup file is blocked by a folder.",
                                  "If possible, please remove the folder currently present at the location '$1$'.",
                                  {shown}, shown);
}

Error protectedAgainstChanges(const std::string& path, const Error& moveError) {
  const auto shown = displayablePath(path);
  const auto error = privilegedOperationError(
      16, "An object or its parent folder are explicitly protected against changes.",
      "The object has either been protected manually (not necessarily by permissions), or is located on a read-only "
      "volume. Please verify that the object at '$1$' and its parent folder can be modified.",
      {shown}, shown);
  auto userInfo = error.userInfo();
  userInfo.set(NSUnderlyingErrorKey, moveError);
  return {error.domain(), error.code(), std::move(userInfo)};
}

/// The new file as far as it came into being.
struct NewFile {
  ErrorOrNil creationError;
  std::unique_ptr<host::ObjectHandle> object;  // none after an error
  bool isWhole = false;                        // and on the storage device
};

// Never through a link or into a file that someone puts into the old file's place: creation takes a free name, and what
// is furnished afterwards is what was created.
NewFile writeNewFile(DirectoryHandle& folder, const char* name, const Data& content) {
  NewFile file;
  const auto writer = folder.createFile(name, kWhileBeingWritten);
  if (!writer) return {.creationError = writer.error()};
  file.isWhole = !(*writer)->write(content) && !(*writer)->synchronize() && !folder.synchronize();
  const auto written = (*writer)->status();
  auto object = folder.openObject(name, FollowLinks::No);
  const auto found = object ? (*object)->status() : Result<host::FileStatus>(std::unexpect, object.error());
  if (!written || !found) return {.creationError = written ? found.error() : written.error()};
  if (written->device != found->device || written->inode != found->inode)
    return {.creationError = Error::posix(posix::kExists)};
  file.object = std::move(*object);
  return file;
}

}  // namespace

ErrorOrNil SystemFileReplacement::modifySystemfile(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  const auto* removeBackup = numberAt(arguments, 2);
  if (!path || !removeBackup) return Error::posix(posix::kInvalidArgument);
  return overwriteSystemFileAtPath(*path, dataAt(arguments, 1), removeBackup->boolValue());
}

ErrorOrNil SystemFileReplacement::overwriteSystemFileAtPath(const std::string& path, const Data* withContent,
                                                            bool removeBackup) {
  const auto mask = childProcesses_.openFileCreationMask();
  if (!withContent || path.empty()) return Error::posix(posix::kInvalidArgument);
  bool isDirectory = false;
  if (!fileManager_.fileExistsAtPath(path, &isDirectory)) return Error::posix(posix::kNoEntry);
  if (isDirectory) return Error::posix(posix::kIsDirectory);
  const auto target = fileManager_.stringByResolvingSymlinksInPath(path);
  auto location = fileSystem_.locate(target);
  if (!location) return fileReadingError(location.error(), target);
  return replace(*location, target, *withContent, removeBackup);
}

ErrorOrNil SystemFileReplacement::makeRoomForBackup(DirectoryHandle& folder, const std::string& name,
                                                    const std::string& path) {
  const auto present = folder.statusOf(name.c_str(), FollowLinks::Yes);
  if (!present) return std::nullopt;
  if (present->isDirectory()) return blockedByFolder(path);
  return fileManager_.removeItem(folder, name, path);
}

ErrorOrNil SystemFileReplacement::replace(host::Location& target, const std::string& path, const Data& content,
                                          bool removeBackup) {
  auto& folder = *target.folder;
  const auto* name = target.name.c_str();
  const auto backupName = target.name + kBackupExtension;
  const auto backupPath = std::string(pathWithoutTrailingSlashes(path)) + kBackupExtension;
  if (auto error = makeRoomForBackup(folder, backupName, backupPath)) return error;

  const auto old = folder.openObject(name, FollowLinks::No);
  if (!old) return fileReadingError(old.error(), path);
  auto attributes = attributesOf(**old, fileSystem_.finderInfoAttributeName());
  if (!attributes) return fileReadingError(attributes.error(), path);
  for (const auto* key : kNotCarried) attributes->remove(key);

  if (const auto error = folder.rename(name, folder, backupName.c_str()))
    return protectedAgainstChanges(path, fileTransferError(*error, path, {path, backupPath, "Move"}));
  const auto file = writeNewFile(folder, name, content);
  if (!file.object) {
    const auto present = folder.statusOf(name, FollowLinks::No);
    return fileWritingError(present ? *file.creationError : present.error(), path);
  }
  if (auto error = fileManager_.setAttributes(*attributes, *file.object, path)) return error;
  // Content that could not be written is no reason to fail, but one not to lose what was there before.
  if (removeBackup && file.isWhole) (void)folder.removeFile(backupName.c_str());
  return std::nullopt;
}

}  // namespace vantrell
