// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/FileObjectCreation.h"

#include "catalogue/ErrorModel.h"
#include "catalogue/OperationArguments.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"

namespace vantrell {
namespace {

constexpr std::uint32_t kRoot = 0;

struct ObjectKind {
  std::string_view typeCode;
  bool isDirectory;
  std::uint16_t permissions;
};

constexpr ObjectKind kObjectKinds[] = {{"F", false, 0644}, {"D", true, 0755}, {"X", false, 0755}};

const ObjectKind* kindFor(std::string_view typeCode) {
  for (const auto& kind : kObjectKinds)
    if (kind.typeCode == typeCode) return &kind;
  return nullptr;
}

Error notCreated(const std::string& path) {
  const auto shown = displayablePath(path);
  return privilegedOperationError(4, "It was not possible to create the specified file system object.",
                                  "Please verify that objects can be created at the location '$1$'.", {shown}, shown);
}

}  // namespace

ErrorOrNil FileObjectCreation::createFileobject(const Array& arguments) {
  const auto* path = textAt(arguments, 0);
  const auto* typeCode = textAt(arguments, 1);
  if (!path || !typeCode) return Error::posix(posix::kInvalidArgument);
  return createFileSystemObjectAtPath(*path, *typeCode);
}

ErrorOrNil FileObjectCreation::createFileSystemObjectAtPath(const std::string& path, std::string_view withTypeCode) {
  const auto mask = childProcesses_.openFileCreationMask();
  const auto* kind = kindFor(withTypeCode);
  if (path.empty() || !kind) return Error::posix(posix::kInvalidArgument);
  if (fileManager_.fileExistsAtPath(path)) return Error::posix(posix::kExists);
  const Dictionary attributes{
      {NSFilePosixPermissions, kind->permissions}, {NSFileOwnerAccountID, kRoot}, {NSFileGroupOwnerAccountID, kRoot}};
  if (kind->isDirectory) {
    if (auto error = fileManager_.createDirectoryAtPath(path, false, attributes)) return error;
  } else if (!fileManager_.createFileAtPath(path, {}, attributes)) {
    return notCreated(path);
  }
  const auto location = fileSystem_.locate(path);
  if (!location) return location.error();
  return location->folder->setOwnerOf(location->name.c_str(), kRoot, kRoot);
}

}  // namespace vantrell
