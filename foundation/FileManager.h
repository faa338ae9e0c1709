// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>

#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell {

// Keys of attributesOfItemAtPath; the constants bear the platform's names, the texts are what travels.
inline constexpr char NSFileType[] = "NSFileType";                                // one of the texts below
inline constexpr char NSFileSize[] = "NSFileSize";                                // unsigned number, bytes
inline constexpr char NSFileModificationDate[] = "NSFileModificationDate";        // date
inline constexpr char NSFilePosixPermissions[] = "NSFilePosixPermissions";        // unsigned number, 12 bits
inline constexpr char NSFileOwnerAccountID[] = "NSFileOwnerAccountID";            // unsigned number
inline constexpr char NSFileGroupOwnerAccountID[] = "NSFileGroupOwnerAccountID";  // unsigned number
inline constexpr char NSFileReferenceCount[] = "NSFileReferenceCount";            // unsigned number
inline constexpr char NSFileSystemNumber[] = "NSFileSystemNumber";                // unsigned number, the device
inline constexpr char NSFileSystemFileNumber[] = "NSFileSystemFileNumber";        // unsigned number, the inode

/// The platform's text for a type: NSFileTypeRegular, NSFileTypeDirectory, NSFileTypeSymbolicLink, NSFileTypeSocket,
/// NSFileTypeCharacterSpecial, NSFileTypeBlockSpecial; NSFileTypeUnknown for all else (named pipes, whiteouts).
std::string_view fileTypeText(host::FileType type) noexcept;

/// What the platform's file manager does, with its errors: Cocoa domain, see foundation/FileManagerErrors.h. Stateless;
/// safe from any thread. The file system must outlive it.
class FileManager {
 public:
  explicit FileManager(host::FileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// Links are followed; a link whose target is missing doesn't exist. `isDirectory` may be null and is false where
  /// nothing exists.
  bool fileExistsAtPath(const std::string& path, bool* isDirectory = nullptr);

  /// Of the object itself, a link included.
  Result<Dictionary> attributesOfItemAtPath(const std::string& path);

  /// Removes the object with all that it contains. Links are removed, never followed, and what is mounted inside is not
  /// emptied. Stops at the first failure, which names the object that failed; objects that vanish meanwhile are none.
  ErrorOrNil removeItemAtPath(const std::string& path);

  /// The failure that removal of this folder would end with once its contents are gone, whatever they are: it is the
  /// root folder, or the last component is "." or "..". Nothing for all other paths.
  ErrorOrNil refusalToRemoveFolderAtPath(const std::string& path);

  /// An absolute path with its links replaced by their targets, ".." taken after that, up to where nothing exists or
  /// 40 links have been met; the rest stays as it is. A relative path stays unchanged.
  std::string stringByResolvingSymlinksInPath(const std::string& path);

 private:
  host::FileSystem& fileSystem_;
};

}  // namespace vantrell
