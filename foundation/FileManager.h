// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Dictionary.h"
#include "foundation/Error.h"
#include "foundation/FileManagerAttributes.h"
#include "foundation/FileManagerEnumerator.h"
#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell {

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

  /// Of the object itself, a link included; see foundation/FileManagerAttributes.h.
  Result<Dictionary> attributesOfItemAtPath(const std::string& path);

  /// Of a link, the target's attributes are set; see foundation/FileManagerAttributes.h.
  ErrorOrNil setAttributes(const Dictionary& attributes, const std::string& ofItemAtPath);
  /// The same for an object at hand, which `path` names in errors.
  ErrorOrNil setAttributes(const Dictionary& attributes, host::ObjectHandle& ofItem, const std::string& path);

  /// The invisibility of an object, links followed, in file browsers.
  ErrorOrNil setHiddenState(bool hidden, const std::string& ofItemAtPath);

  /// Names in the order of the file system, hidden ones included, links followed.
  Result<std::vector<std::string>> contentsOfDirectoryAtPath(const std::string& path);

  /// Of a link to a folder, what that folder contains. One without objects where there is no folder that can be read.
  FileManagerEnumerator enumeratorAtPath(const std::string& path);

  /// With intermediate folders an existing folder is success; these and the folder itself get mode 0755 unless the
  /// attributes say else, which are the last folder's only.
  ErrorOrNil createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories,
                                   const Dictionary& attributes = {});

  /// Whether the file was made (mode 0644 unless the attributes say else), with all of the contents and attributes.
  /// What is there, be it a link that leads nowhere, is left alone.
  bool createFileAtPath(const std::string& path, DataView contents, const Dictionary& attributes = {});

  ErrorOrNil createSymbolicLinkAtPath(const std::string& path, const std::string& withDestinationPath);

  /// A further name for the object itself, a link included.
  ErrorOrNil linkItemAtPath(const std::string& path, const std::string& toPath);

  /// Moves the object itself, a link included, and never replaces anything. To another volume it is copied (see
  /// foundation/FileManagerCopy.h), then removed: a failed copy leaves nothing behind, a failed removal the copy.
  ErrorOrNil moveItemAtPath(const std::string& path, const std::string& toPath);
  /// The same for an entry of a folder at hand; the paths name both places in errors.
  ErrorOrNil moveItem(host::DirectoryHandle& folder, const std::string& name, const std::string& path,
                      host::DirectoryHandle& toFolder, const std::string& newName, const std::string& toPath);

  /// Removes the object with all that it contains. Links are removed, never followed, and what is mounted inside is not
  /// emptied. Stops at the first failure, which names the object that failed; objects that vanish meanwhile are none.
  ErrorOrNil removeItemAtPath(const std::string& path);
  /// The same for an entry of a folder at hand, which `path` names in errors.
  ErrorOrNil removeItem(host::DirectoryHandle& folder, const std::string& name, const std::string& path);

  /// The failure that removal of this folder would end with once its contents are gone, whatever they are: it is the
  /// root folder, or the last component is "." or "..". Nothing for all other paths.
  ErrorOrNil refusalToRemoveFolderAtPath(const std::string& path);
  /// The same for the folder that has this status.
  ErrorOrNil refusalToRemoveFolder(const host::FileStatus& status, const std::string& path);

  /// An absolute path with its links replaced by their targets, ".." taken after that, up to where nothing exists or
  /// 40 links have been met; the rest stays as it is. A relative path stays unchanged. Where "/etc", "/tmp" and "/var"
  /// lie in another folder that nobody writes, its name is left out of the result if that exists without it.
  std::string stringByResolvingSymlinksInPath(const std::string& path);

 private:
  std::string resolvedPath(const std::string& path);

  host::FileSystem& fileSystem_;
};

}  // namespace vantrell
