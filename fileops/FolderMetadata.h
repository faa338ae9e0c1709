// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "fileops/ExtendedAttributes.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Gives an object the owner, group, permissions (its own: see ObjectHandle) and flags of `folderMetadata`, exactly
/// these extended attributes, and this access control list: null for none, in which case one that the object has is
/// replaced by an empty one. Every failure is passed over; links are followed.
void enforceFolderMetadata(const host::FileStatus& folderMetadata, const ExtendedAttributeSet& extendedAttributes,
                           const host::AccessControlList* accessControlList, host::FileSystem& fileSystem,
                           const std::string& ifNecessaryIgnoringErrorsForItemAtPath);

/// The same for an object at hand.
void enforceFolderMetadata(const host::FileStatus& folderMetadata, const ExtendedAttributeSet& extendedAttributes,
                           const host::AccessControlList* accessControlList, host::ObjectHandle& object);

}  // namespace vantrell
