// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/PropagationErrors.h"

#include <string>

#include "catalogue/ErrorModel.h"
#include "foundation/FileManagerErrors.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"

namespace vantrell::propagation_error {
namespace {

Error makeError(std::int64_t code, const char* description, const char* suggestion, std::string_view path,
                const Error& underlying) {
  return {privilegedOperationErrorDomain(), code,
          Dictionary{{NSLocalizedDescriptionKey, description},
                     {NSLocalizedRecoverySuggestionErrorKey, suggestion},
                     {NSFilePathErrorKey, displayablePath(path)},
                     {NSUnderlyingErrorKey, underlying}}};
}

}  // namespace

Error accessControlListNotSet(std::string_view path, const Error& underlying) {
  return makeError(12, "An Access Control List could not be set.",
                   "The operating system was unable to change the rights for a file system object via an Access "
                   "Control List.",
                   path, underlying);
}

Error attributesNotRead(std::string_view path, const Error& underlying) {
  return makeError(
      13, "It was not possible to determine the attributes of a file system object.",
      "The operating system was unable to get attributes or other status information about a file or folder.", path,
      underlying);
}

Error ownerNotChanged(std::string_view path, const Error& underlying) {
  return makeError(14, "It was not possible to change the owner of a file system object.",
                   "The operating system was unable to set a new owner for a file and folder.", path, underlying);
}

Error permissionsNotChanged(std::string_view path, const Error& underlying) {
  return makeError(15, "It was not possible to change the POSIX permissions of a file system object.",
                   "The operating system was unable to establish new permission settings for a file or folder.", path,
                   underlying);
}

Error folderNotRead(std::string_view path, const Error& posixError) {
  return makeError(22, "A folder could not be read.", "This folder may be shielded by System Integrity Protection.",
                   path, fileReadingError(posixError, displayablePath(path)));
}

Error accessControlListNotRead(std::string_view path, const Error& underlying) {
  return makeError(23, "The Access Control List (ACL) of a file system object could not be read.",
                   "Please check whether this volume supports ACLs and whether the object can be read by an absolute "
                   "path with acceptable length.",
                   path, underlying);
}

Error setIdentityObjectNotReowned(std::string_view path) {
  return {std::string(kPosixErrorDomain), posix::kInvalidArgument,
          Dictionary{{NSFilePathErrorKey, displayablePath(path)}}};
}

}  // namespace vantrell::propagation_error
