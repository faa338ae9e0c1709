// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What walks trees: searches, and what hands rights down.

#include "core/QELPrivilegedOperationSetImplementorLm4.h"
#include "core/QELPrivilegedTool.h"
#include "foundation/FileManager.h"
#include "treewalk/PermissionOperations.h"
#include "treewalk/SearchOperations.h"

namespace vantrell {

namespace {

struct Searches {
  explicit Searches(host::Host& host)
      : fileManager(*host.fileSystem),
        operations(*host.fileSystem, fileManager, *host.identities, Log(*host.systemLog)) {}

  FileManager fileManager;
  SearchOperations operations;
};

struct Permissions {
  explicit Permissions(host::Host& host)
      : fileManager(*host.fileSystem), operations(*host.fileSystem, fileManager, Log(*host.systemLog)) {}

  FileManager fileManager;
  PermissionOperations operations;
};

}  // namespace

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationSearchAgedfiles(const Array& arguments,
                                                                                    Feedback* feedbackConnection) {
  return Searches(privilegedTool().host()).operations.searchAgedfiles(arguments, feedbackConnection, [this] {
    return isCancelled();
  });
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationSearchFilenames(const Array& arguments,
                                                                                    Feedback* feedbackConnection) {
  return Searches(privilegedTool().host()).operations.searchFilenames(arguments, feedbackConnection, [this] {
    return isCancelled();
  });
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationSearchPatterns(const Array& arguments,
                                                                                   Feedback* feedbackConnection) {
  return Searches(privilegedTool().host()).operations.searchPatterns(arguments, feedbackConnection);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationSearchFileorphans(const Array& arguments,
                                                                                      Feedback* feedbackConnection) {
  return Searches(privilegedTool().host()).operations.searchFileorphans(arguments, feedbackConnection, [this] {
    return isCancelled();
  });
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationInspectStoragesize(const Array& arguments) {
  return Searches(privilegedTool().host()).operations.inspectStoragesize(arguments, [this] { return isCancelled(); });
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationModifyAcl(const Array& arguments) {
  return Permissions(privilegedTool().host()).operations.modifyAcl(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationPropPermissions(const Array& arguments,
                                                                                    Feedback* feedbackConnection) {
  return Permissions(privilegedTool().host()).operations.propPermissions(arguments, feedbackConnection, [this] {
    return isCancelled();
  });
}

}  // namespace vantrell
