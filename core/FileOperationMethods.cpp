// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

// What changes single objects and removes trees.

#include "core/QELPrivilegedOperationSetImplementorLm4.h"
#include "core/QELPrivilegedTool.h"
#include "fileops/AdvancedOpsAdditions.h"
#include "fileops/FileObjectCreation.h"
#include "fileops/FileObjectOperations.h"
#include "fileops/SystemFileReplacement.h"
#include "foundation/FileManager.h"

namespace vantrell {

/// The room behind the methods, put together for one request.
struct QELPrivilegedOperationSetImplementorLm4::FileObjects {
  explicit FileObjects(QELPrivilegedTool& tool)
      : fileManager(*tool.host().fileSystem),
        advancedOps(fileManager, *tool.host().fileSystem, tool.processInfo(), Log(*tool.host().systemLog),
                    tool.host().currentProcess->effectiveUserID()),
        operations(advancedOps, fileManager, *tool.host().fileSystem) {}

  FileManager fileManager;
  AdvancedOpsAdditions advancedOps;
  FileObjectOperations operations;
};

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationModifySystemfile(const Array& arguments) {
  auto& host = privilegedTool().host();
  FileManager fileManager(*host.fileSystem);
  return SystemFileReplacement(fileManager, *host.fileSystem, *host.childProcesses).modifySystemfile(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationCreateFileobject(const Array& arguments) {
  auto& host = privilegedTool().host();
  FileManager fileManager(*host.fileSystem);
  return FileObjectCreation(fileManager, *host.fileSystem, *host.childProcesses).createFileobject(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationRenameFileobject(const Array& arguments) {
  return FileObjects(privilegedTool()).operations.renameFileobject(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationDeleteFileobjects(const Array& arguments,
                                                                                      Feedback* feedbackConnection) {
  return FileObjects(privilegedTool()).operations.deleteFileobjects(arguments, feedbackConnection, [this] {
    return isCancelled();
  });
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationDeleteFoldercontents(const Array& arguments,
                                                                                         Feedback* feedbackConnection) {
  return FileObjects(privilegedTool()).operations.deleteFoldercontents(arguments, feedbackConnection, [this] {
    return isCancelled();
  });
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationInspectFileobject(const Array& arguments) {
  return FileObjects(privilegedTool()).operations.inspectFileobject(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationTouchFileobject(const Array& arguments) {
  return FileObjects(privilegedTool()).operations.touchFileobject(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationModifyProtection(const Array& arguments) {
  return FileObjects(privilegedTool()).operations.modifyProtection(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationModifyHfsattr(const Array& arguments) {
  return FileObjects(privilegedTool()).operations.modifyHfsattr(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationCreateLink(const Array& arguments) {
  return FileObjects(privilegedTool()).operations.createLink(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationRenameStashfolder(const Array& arguments) {
  return FileObjects(privilegedTool()).operations.renameStashfolder(arguments);
}

}  // namespace vantrell
