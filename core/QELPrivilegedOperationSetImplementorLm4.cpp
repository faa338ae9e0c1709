// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/QELPrivilegedOperationSetImplementorLm4.h"

#include <algorithm>
#include <array>

#include "core/QELPrivilegedTool.h"
#include "fileops/AdvancedOpsAdditions.h"
#include "fileops/FileObjectOperations.h"
#include "foundation/FileManager.h"
#include "process/SystemProgramRunner.h"

namespace vantrell {

/// One row: a selector and the method that answers it, of one of the two shapes.
struct QELPrivilegedOperationSetImplementorLm4::Entry {
  using Plain = ErrorOrNil (QELPrivilegedOperationSetImplementorLm4::*)(const Array&);
  using WithFeedback = ErrorOrNil (QELPrivilegedOperationSetImplementorLm4::*)(const Array&, Feedback*);

  constexpr Entry(std::string_view name, Plain method) : selector(name), plain(method) {}
  constexpr Entry(std::string_view name, WithFeedback method) : selector(name), withFeedback(method) {}

  std::string_view selector;
  Plain plain = nullptr;
  WithFeedback withFeedback = nullptr;
};

/// The rooms behind the file-object methods, put together for one request.
struct QELPrivilegedOperationSetImplementorLm4::FileObjects {
  explicit FileObjects(QELPrivilegedTool& tool)
      : fileManager(*tool.host().fileSystem),
        advancedOps(fileManager, *tool.host().fileSystem, tool.processInfo(), Log(*tool.host().systemLog),
                    tool.host().currentProcess->effectiveUserID()),
        operations(advancedOps, fileManager) {}

  FileManager fileManager;
  AdvancedOpsAdditions advancedOps;
  FileObjectOperations operations;
};

std::span<const QELPrivilegedOperationSetImplementorLm4::Entry> QELPrivilegedOperationSetImplementorLm4::entries() {
  using Self = QELPrivilegedOperationSetImplementorLm4;
  static constexpr std::array kEntries = {
      Entry{"performOperationDeleteFileobjectsWithArguments:feedbackConnection:",
            &Self::performOperationDeleteFileobjects},
      Entry{"performOperationInspectFileobjectWithArguments:", &Self::performOperationInspectFileobject},
      Entry{"performOperationExecuteUtilityWithArguments:feedbackConnection:", &Self::performOperationExecuteUtility},
  };
  return kEntries;
}

std::vector<std::string_view> QELPrivilegedOperationSetImplementorLm4::implementedSelectors() {
  std::vector<std::string_view> selectors;
  for (const auto& entry : entries()) selectors.push_back(entry.selector);
  return selectors;
}

OperationMethod QELPrivilegedOperationSetImplementorLm4::methodForSelector(std::string_view selector) {
  const auto found = std::ranges::find(entries(), selector, &Entry::selector);
  if (found == entries().end()) return {};
  return [this, entry = *found](const Array& arguments, Feedback* feedback) {
    return entry.plain ? (this->*entry.plain)(arguments) : (this->*entry.withFeedback)(arguments, feedback);
  };
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationDeleteFileobjects(const Array& arguments,
                                                                                      Feedback* feedbackConnection) {
  return FileObjects(privilegedTool()).operations.deleteFileobjects(arguments, feedbackConnection, [this] {
    return isCancelled();
  });
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationInspectFileobject(const Array& arguments) {
  return FileObjects(privilegedTool()).operations.inspectFileobject(arguments);
}

ErrorOrNil QELPrivilegedOperationSetImplementorLm4::performOperationExecuteUtility(const Array& arguments,
                                                                                   Feedback* feedbackConnection) {
  auto& host = privilegedTool().host();
  FileManager fileManager(*host.fileSystem);
  SystemProgramRunner runner(*host.childProcesses, fileManager, *host.fileSystem, Log(*host.systemLog),
                             concreteOperation());
  return runner.executeUtility(arguments, feedbackConnection);
}

}  // namespace vantrell
