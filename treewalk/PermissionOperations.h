// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "foundation/Error.h"
#include "foundation/FileManager.h"
#include "foundation/Log.h"
#include "foundation/Value.h"
#include "host/FileSystem.h"
#include "host/Transport.h"
#include "treewalk/PropagationRights.h"

namespace vantrell {

/// The operations on access rights that clients ask for. Arguments that the catalogue would not have let through are
/// POSIX error 22. Stateless; safe from any thread. What it is given must outlive it.
class PermissionOperations {
 public:
  using IsCancelled = std::function<bool()>;

  PermissionOperations(host::FileSystem& fileSystem, FileManager& fileManager, const Log& log)
      : fileSystem_(fileSystem), fileManager_(fileManager), log_(log) {}

  /// Arguments: a path, whose links are followed, and an access control list in its external form (data). POSIX error
  /// 22 for an empty path and for data that is no list, else what the system says.
  ErrorOrNil modifyAcl(const Array& arguments);

  /// Arguments: a folder, to which links are followed; the number of objects to be expected below it, 0 counting as 1;
  /// and propagation_option bits, of which the low eight are read. The folder itself is not changed.
  ///
  /// Copy mode gives everything below it, on its own file system, the folder's access control list, owner, group and
  /// mode, as far as asked. Re-inheritance mode gives every file and folder the list that its own folder hands on.
  ///
  /// Progress goes to `feedback`, which may be null, as {"ProgressFraction": objects done / objects expected}, which is
  /// more than 1 where too few were expected: in copy mode for every 100th object, in re-inheritance mode twice for
  /// each folder; and 1 at the end, also of one that failed. Cancellation is looked for at the same moments and ends
  /// the operation with POSIX error 89, in copy mode without the last message.
  ///
  /// Errors 12 to 15, 22 and 23, see treewalk/PropagationErrors.h; POSIX errors 2 and 20 for a folder that is missing
  /// or none. What was changed before an error stays changed.
  ErrorOrNil propPermissions(const Array& arguments, QELPrivilegedOperationFeedbackProtocol* feedback,
                             const IsCancelled& isCancelled);

 private:
  struct Source;
  struct Request;

  Result<Source> readSource(const std::string& path);
  ErrorOrNil copyRights(const Source& source, const Request& request);
  ErrorOrNil reinherit(const Source& source, const Request& request);

  host::FileSystem& fileSystem_;
  FileManager& fileManager_;
  Log log_;
};

}  // namespace vantrell
