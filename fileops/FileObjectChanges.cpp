// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// The operations that look at or change one object and have no progress to report.

#include "catalogue/ErrorModel.h"
#include "catalogue/OperationArguments.h"
#include "fileops/FileObjectOperations.h"
#include "fileops/FolderMove.h"
#include "fileops/LinkCreation.h"
#include "fileops/MacAttributes.h"
#include "foundation/PosixCodes.h"

namespace vantrell {
namespace {

Error invalidArgument() {
  return Error::posix(posix::kInvalidArgument);
}

}  // namespace

ErrorOrNil FileObjectOperations::renameFileobject(const Array& arguments) {
  const auto* oldPath = textAt(arguments, 0);
  const auto* newPath = textAt(arguments, 1);
  if (!oldPath || !newPath) return invalidArgument();
  return fileManager_.moveItemAtPath(*oldPath, *newPath);
}

ErrorOrNil FileObjectOperations::inspectFileobject(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  if (!path || path->empty()) return invalidArgument();
  bool isDirectory = false;
  const bool exists = fileManager_.fileExistsAtPath(fileManager_.stringByResolvingSymlinksInPath(*path), &isDirectory);
  const auto existence = !exists ? Existence::Nothing : isDirectory ? Existence::Folder : Existence::Other;
  return Error(privilegedOperationErrorDomain(), 0,
               Dictionary{{"ObjectExistence", static_cast<std::uint32_t>(existence)}});
}

ErrorOrNil FileObjectOperations::touchFileobject(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  if (!path || path->empty()) return invalidArgument();
  const auto resolved = fileManager_.stringByResolvingSymlinksInPath(*path);
  if (!fileManager_.fileExistsAtPath(resolved)) return Error::posix(posix::kNoEntry);
  const auto object = fileSystem_.openObject(resolved, host::FollowLinks::Yes);
  return object ? (*object)->touch() : object.error();
}

ErrorOrNil FileObjectOperations::modifyProtection(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  const auto* value = numberAt(arguments, 1);
  const auto* recursive = numberAt(arguments, 2);
  const auto* stayOnFileSystem = numberAt(arguments, 3);
  if (!path || !value || !recursive || !stayOnFileSystem) return invalidArgument();
  return advancedOps_.setUserImmutableAtPath(*path, value->boolValue(), recursive->boolValue(),
                                             stayOnFileSystem->boolValue());
}

ErrorOrNil FileObjectOperations::modifyHfsattr(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  const auto* typeCode = numberAt(arguments, 1);
  const auto* creatorCode = numberAt(arguments, 2);
  const auto* hidden = numberAt(arguments, 3);
  if (!path || !typeCode || !creatorCode || !hidden) return invalidArgument();
  return setMacAttributesAtPath(fileManager_, *path, typeCode->unsigned32Value(), creatorCode->unsigned32Value(),
                                hidden->boolValue());
}

ErrorOrNil FileObjectOperations::createLink(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  const auto* target = textAt(arguments, 1);
  const auto* asHardLink = numberAt(arguments, 2);
  if (!path || !target || !asHardLink) return invalidArgument();
  return createLinkAtPath(fileManager_, *path, *target, asHardLink->boolValue());
}

ErrorOrNil FileObjectOperations::renameStashfolder(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  const auto* newName = textAt(arguments, 1);
  const auto* substitute = numberAt(arguments, 2);
  if (!path || !newName || !substitute) return invalidArgument();
  return moveFolderAtPath(fileManager_, fileSystem_, *path, *newName, substitute->boolValue());
}

}  // namespace vantrell
