// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/FolderMetadata.h"

#include <optional>
#include <string>
#include <vector>

namespace vantrell {

using host::FollowLinks;
using host::FSCompression;

namespace {

// Failures are of no account below: what can't be had stays as it is.
void enforceStatus(const host::FileStatus& wanted, host::ObjectHandle& object) {
  const auto present = object.status();
  if (!present) return;
  const bool otherOwner = present->owner != wanted.owner || present->group != wanted.group;
  if (otherOwner) (void)object.setOwner(wanted.owner, wanted.group);
  // A change of owner may have cost permission bits.
  const auto permissions = object.ownPermissions(*present);
  if (otherOwner || !permissions || *permissions != wanted.permissions) (void)object.setPermissions(wanted.permissions);
  if (present->flags != wanted.flags) (void)object.setFlags(wanted.flags);
}

void enforceExtendedAttributes(const ExtendedAttributeSet& wanted, host::ObjectHandle& object) {
  const auto present = extendedAttributesOf(object);
  if (!present) return;
  for (const auto& [name, value] : wanted) (void)object.setExtendedAttribute(name, value);
  for (const auto& [name, value] : *present)
    if (!wanted.contains(name)) (void)object.removeExtendedAttribute(name, FSCompression::Hide);
}

}  // namespace

void enforceFolderMetadata(const host::FileStatus& folderMetadata, const ExtendedAttributeSet& extendedAttributes,
                           const host::AccessControlList* accessControlList, host::ObjectHandle& object) {
  enforceStatus(folderMetadata, object);
  enforceExtendedAttributes(extendedAttributes, object);
  (void)object.setAccessControlList(accessControlList);  // null empties a list that is there
}

void enforceFolderMetadata(const host::FileStatus& folderMetadata, const ExtendedAttributeSet& extendedAttributes,
                           const host::AccessControlList* accessControlList, host::FileSystem& fileSystem,
                           const std::string& ifNecessaryIgnoringErrorsForItemAtPath) {
  if (const auto object = fileSystem.openObject(ifNecessaryIgnoringErrorsForItemAtPath, FollowLinks::Yes))
    enforceFolderMetadata(folderMetadata, extendedAttributes, accessControlList, **object);
}

}  // namespace vantrell
