// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <string>

#include "fileops/PrivacyPolicy.h"
#include "foundation/Error.h"
#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/Value.h"
#include "host/FileSystem.h"
#include "platform/NSProcessInfoQELAdditions.h"

namespace vantrell {

/// The file manager's further operations: removal of what ordinary removal leaves, and what stands in its way.
///
/// Errors are of the POSIX domain without user info, of the file-deletion domain (fileops/FileDeletionErrors.h), or, in
/// recursive removals, the file manager's. Flags that were cleared for a removal stay cleared when it fails. Stateless
/// but for what it refers to; safe from any thread. What it is given must outlive it.
class AdvancedOpsAdditions {
 public:
  /// `log` is the default log. Without a privacy policy the privacy control is never taken for the cause.
  AdvancedOpsAdditions(FileManager& fileManager, host::FileSystem& fileSystem, NSProcessInfoQELAdditions& processInfo,
                       Log log, std::uint32_t effectiveUserID, PrivacyPolicy* privacyPolicy = nullptr);

  std::string fileDeletionErrorDomain() const;

  ErrorOrNil enforceRemovalOfFileSystemObjectAtPath(const std::string& path, bool recursive);

  /// Removes one object, an empty folder or a link itself, in spite of user flags. System flags and whiteouts are
  /// refused.
  ErrorOrNil enforceSingleRemovalOfFileSystemObjectAtPath(const std::string& path);

  /// Clears the user-immutable flag of the object and of all that it contains, then removes it. Nothing at the path,
  /// which is where a link without a target leads too, is success.
  ErrorOrNil enforceRecursiveRemovalOfFileSystemObjectAtPath(const std::string& path);

  /// The same for an entry of a folder at hand, which `path` names in errors.
  ErrorOrNil enforceRecursiveRemovalOfEntry(host::DirectoryHandle& folder, const std::string& name,
                                            const std::string& path);

  /// Of a link, the target's flag is changed. A missing target is POSIX error 2 or, unless its existence is to be
  /// checked, success. Clearing succeeds where flags aren't supported.
  ErrorOrNil setImmutableFlag(bool value, const std::string& path, bool checkingExistenceOfLinkTarget);

  /// The same for an object and, if `recursive`, all that it contains; of links inside the targets are changed, but not
  /// what those contain. With `stayOnFileSystem` mount points and what lies behind them keep their flags.
  ErrorOrNil setUserImmutableAtPath(const std::string& path, bool value, bool recursive, bool stayOnFileSystem);

  /// Device number of the object itself, 0xFFFFFFFF when it can't be examined.
  std::uint32_t fileSystemIDForPath(const std::string& path);

  /// Whether the object is under the operating system's own protection, which may be why acting on it failed with
  /// `*refiningError`: that is then replaced by a file-deletion error (it may be so without the answer being true, for
  /// the privacy control). Null is logged as a mistake and counts as no error.
  bool isSecurityProtectedObjectAtPath(const std::string& path, ErrorOrNil* refiningError);

  /// Appends the object's information record (fileops/FileObjectInfo.h). Does nothing without an array, for an empty
  /// path, or when the object can't be examined.
  void addFileSystemObjectInfoDictionaryToArray(Array* array, const std::string& path);

 private:
  ErrorOrNil refined(const std::string& path, Error error);
  ErrorOrNil clearFlagsForRemoval(host::DirectoryHandle& folder, const std::string& name, const std::string& path);
  static ErrorOrNil setImmutableFlagOf(host::ObjectHandle& object, bool value);
  bool isAccessDeniedByPrivacyPolicy();
  bool bearsRestriction(const std::string& path);

  FileManager& fileManager_;
  host::FileSystem& fileSystem_;
  NSProcessInfoQELAdditions& processInfo_;
  Log log_;
  std::uint32_t effectiveUserID_;
  PrivacyPolicy* privacyPolicy_;
};

}  // namespace vantrell
