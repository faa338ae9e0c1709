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

/// The operations on single objects that clients ask for. Arguments that the catalogue would not have let through are
/// POSIX error 22. Stateless; safe from any thread. What it is given must outlive it.
class FileObjectOperations {
 public:
  using IsCancelled = std::function<bool()>;

  /// Values under "ObjectExistence".
  enum class Existence : std::uint32_t { Nothing = 0, Folder = 1, Other = 2 };

  FileObjectOperations(AdvancedOpsAdditions& advancedOps, FileManager& fileManager)
      : advancedOps_(advancedOps), fileManager_(fileManager) {}

  /// Arguments: recursive and stop-on-first-error ("0" or "1" each), then at least one path. Progress goes to
  /// `feedback`, which may be null, as {"ProgressFraction": 0 to 1}: after each path, and 1 at the end. Cancellation is
  /// looked for before each path and ends the operation with POSIX error 89 and no further message.
  ErrorOrNil deleteFileobjects(const Array& arguments, QELPrivilegedOperationFeedbackProtocol* feedback,
                               const IsCancelled& isCancelled);

  /// Without stopping on the first error, the last one is the result.
  ErrorOrNil deleteFileSystemObjectsAtPaths(const std::vector<std::string>& paths, bool recursive,
                                            bool stopOnFirstError, QELPrivilegedOperationFeedbackProtocol* feedback,
                                            const IsCancelled& isCancelled);

  /// Argument: a path, whose links are followed. What is there comes back as an error of the operation set's domain
  /// with code 0 and "ObjectExistence" as its only user info.
  ErrorOrNil inspectFileobject(const Array& arguments);

  /// "0" and "1"; nothing for any other text.
  static std::optional<bool> getBool(std::string_view fromStringArgument);

 private:
  AdvancedOpsAdditions& advancedOps_;
  FileManager& fileManager_;
};

}  // namespace vantrell
