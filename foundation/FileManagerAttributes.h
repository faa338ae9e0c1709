// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/ObjectHandle.h"

namespace vantrell {

// Keys of an object's attributes; the constants bear the platform's names, the texts are what travels.
inline constexpr char NSFileType[] = "NSFileType";                                // see fileTypeText
inline constexpr char NSFileSize[] = "NSFileSize";                                // unsigned number, bytes
inline constexpr char NSFileModificationDate[] = "NSFileModificationDate";        // date
inline constexpr char NSFilePosixPermissions[] = "NSFilePosixPermissions";        // unsigned number, 12 bits
inline constexpr char NSFileOwnerAccountID[] = "NSFileOwnerAccountID";            // unsigned number
inline constexpr char NSFileGroupOwnerAccountID[] = "NSFileGroupOwnerAccountID";  // unsigned number
inline constexpr char NSFileReferenceCount[] = "NSFileReferenceCount";            // unsigned number
inline constexpr char NSFileSystemNumber[] = "NSFileSystemNumber";                // unsigned number, the device
inline constexpr char NSFileSystemFileNumber[] = "NSFileSystemFileNumber";        // unsigned number, the inode
inline constexpr char NSFileExtensionHidden[] = "NSFileExtensionHidden";          // boolean
// Left out where they say nothing:
inline constexpr char NSFileCreationDate[] = "NSFileCreationDate";      // date, where the file system keeps it
inline constexpr char NSFileImmutable[] = "NSFileImmutable";            // boolean, when set
inline constexpr char NSFileAppendOnly[] = "NSFileAppendOnly";          // boolean, when set
inline constexpr char NSFileHFSTypeCode[] = "NSFileHFSTypeCode";        // unsigned number, unless 0
inline constexpr char NSFileHFSCreatorCode[] = "NSFileHFSCreatorCode";  // unsigned number, unless 0

/// All of the above for one object. Account names are left out: no user database is within reach, and the numbers say
/// it all.
Result<Dictionary> attributesOf(const host::ObjectHandle& object, const std::string& finderInfoAttribute);

/// Sets those that can be set and are given, in this order: immutable and append flags cleared, owner and group,
/// permissions, Finder information, modification date, flags set (as given, or else as they were). Creation dates are
/// the file system's own business, other keys are passed over. POSIX errors.
ErrorOrNil setAttributesOf(host::ObjectHandle& object, const Dictionary& attributes,
                           const std::string& finderInfoAttribute);

/// The object's invisibility in file browsers. POSIX errors.
ErrorOrNil setHiddenStateOf(host::ObjectHandle& object, bool hidden, const std::string& finderInfoAttribute);

}  // namespace vantrell
