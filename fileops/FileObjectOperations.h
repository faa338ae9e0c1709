// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fileops/AdvancedOpsAdditions.h"
#include "foundation/Error.h"
#include "foundation/FileManager.h"
#include "foundation/Value.h"
#include "host/Transport.h"

namespace vantrell {

/// The operations on single objects that clients ask for, but for those that have their own classes
/// (FileObjectCreation, SystemFileReplacement). Arguments that the catalogue would not have let through are POSIX
/// error 22. Stateless; safe from any thread. What it is given must outlive it.
class FileObjectOperations {
 public:
  using IsCancelled = std::function<bool()>;

  /// Values under "ObjectExistence".
  enum class Existence : std::uint32_t { Nothing = 0, Folder = 1, Other = 2 };

  FileObjectOperations(AdvancedOpsAdditions& advancedOps, FileManager& fileManager, host::FileSystem& fileSystem)
      : advancedOps_(advancedOps), fileManager_(fileManager), fileSystem_(fileSystem) {}

  /// Arguments: the old and the new full path. Errors are the file manager's.
  ErrorOrNil renameFileobject(const Array& arguments);

  /// Arguments: recursive and stop-on-first-error ("0" or "1" each), then at least one path. Progress goes to
  /// `feedback`, which may be null, as {"ProgressFraction": 0 to 1}: after each path, and 1 at the end. Cancellation is
  /// looked for before each path and ends the operation with POSIX error 89 and no further message.
  ErrorOrNil deleteFileobjects(const Array& arguments, QELPrivilegedOperationFeedbackProtocol* feedback,
                               const IsCancelled& isCancelled);

  /// Without stopping on the first error, the last one is the result.
  ErrorOrNil deleteFileSystemObjectsAtPaths(const std::vector<std::string>& paths, bool recursive,
                                            bool stopOnFirstError, QELPrivilegedOperationFeedbackProtocol* feedback,
                                            const IsCancelled& isCancelled);

  /// Arguments: folders, links followed, whose contents are removed as recursive removal does it; one that doesn't
  /// exist is passed over, anything else that is no folder is POSIX error 20. Ends with the first failure. Progress:
  /// before each folder and, after success, 1. Cancellation is looked for before each folder and each entry.
  ErrorOrNil deleteFoldercontents(const Array& arguments, QELPrivilegedOperationFeedbackProtocol* feedback,
                                  const IsCancelled& isCancelled);

  /// Argument: a path, whose links are followed. What is there comes back as an error of the operation set's domain
  /// with code 0 and "ObjectExistence" as its only user info.
  ErrorOrNil inspectFileobject(const Array& arguments);

  /// Argument: a path, whose links are followed. POSIX error 2 where nothing is.
  ErrorOrNil touchFileobject(const Array& arguments);

  /// Arguments: a path, the flag's value, recursive, stay on file system; see
  /// AdvancedOpsAdditions::setUserImmutableAtPath.
  ErrorOrNil modifyProtection(const Array& arguments);

  /// Arguments: a path, type code, creator code, hidden; see setMacAttributesAtPath.
  ErrorOrNil modifyHfsattr(const Array& arguments);

  /// Arguments: path of the new link, its target, hard link; see createLinkAtPath.
  ErrorOrNil createLink(const Array& arguments);

  /// Arguments: a folder's path, its new name, create an empty substitute; see moveFolderAtPath.
  ErrorOrNil renameStashfolder(const Array& arguments);

  /// "0" and "1"; nothing for any other text.
  static std::optional<bool> getBool(std::string_view fromStringArgument);

 private:
  ErrorOrNil deleteContents(const std::string& path, const IsCancelled& isCancelled);

  AdvancedOpsAdditions& advancedOps_;
  FileManager& fileManager_;
  host::FileSystem& fileSystem_;
};

}  // namespace vantrell
