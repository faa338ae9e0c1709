// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "core/QELPrivilegedOperationSetImplementor.h"

namespace vantrell {

/// Carries out the operations of the set "lm4": hands each to the room that does the work.
class QELPrivilegedOperationSetImplementorLm4 final : public QELPrivilegedOperationSetImplementor {
 public:
  static constexpr char kClassName[] = "QELPrivilegedOperationSetImplementorLm4";

  using QELPrivilegedOperationSetImplementor::QELPrivilegedOperationSetImplementor;

  OperationMethod methodForSelector(std::string_view selector) override;

  /// Every selector that there is a method for.
  static std::vector<std::string_view> implementedSelectors();

 private:
  using Feedback = QELPrivilegedOperationFeedbackProtocol;
  struct Entry;
  struct FileObjects;
  static std::span<const Entry> entries();

  // core/FileOperationMethods.cpp
  ErrorOrNil performOperationModifySystemfile(const Array& arguments);
  ErrorOrNil performOperationCreateFileobject(const Array& arguments);
  ErrorOrNil performOperationRenameFileobject(const Array& arguments);
  ErrorOrNil performOperationDeleteFileobjects(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationDeleteFoldercontents(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationInspectFileobject(const Array& arguments);
  ErrorOrNil performOperationTouchFileobject(const Array& arguments);
  ErrorOrNil performOperationModifyProtection(const Array& arguments);
  ErrorOrNil performOperationModifyHfsattr(const Array& arguments);
  ErrorOrNil performOperationCreateLink(const Array& arguments);
  ErrorOrNil performOperationRenameStashfolder(const Array& arguments);

  // core/TreeOperationMethods.cpp
  ErrorOrNil performOperationSearchAgedfiles(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationSearchFilenames(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationSearchPatterns(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationSearchFileorphans(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationInspectStoragesize(const Array& arguments);
  ErrorOrNil performOperationModifyAcl(const Array& arguments);
  ErrorOrNil performOperationPropPermissions(const Array& arguments, Feedback* feedbackConnection);

  // core/SystemOperationMethods.cpp
  ErrorOrNil performOperationModifyKernelsetting(const Array& arguments);
  ErrorOrNil performOperationModifyNvram(const Array& arguments);
  ErrorOrNil performOperationModifyPreferences(const Array& arguments);
  ErrorOrNil performOperationModifySysconf(const Array& arguments);
  ErrorOrNil performOperationSignalProcess(const Array& arguments);
  ErrorOrNil performOperationExecuteUtility(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationEnableIpvsix(const Array& arguments);
  ErrorOrNil performOperationCreateInstallmedia(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationEraseDiskblocks(const Array& arguments);
  ErrorOrNil performOperationWriteSmcvalue(const Array& arguments);
};

}  // namespace vantrell
