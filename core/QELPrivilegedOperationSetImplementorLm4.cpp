// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/QELPrivilegedOperationSetImplementorLm4.h"

#include <algorithm>
#include <array>

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

std::span<const QELPrivilegedOperationSetImplementorLm4::Entry> QELPrivilegedOperationSetImplementorLm4::entries() {
  using Self = QELPrivilegedOperationSetImplementorLm4;
  static constexpr std::array kEntries = {
      Entry{"performOperationModifySystemfileWithArguments:", &Self::performOperationModifySystemfile},
      Entry{"performOperationCreateFileobjectWithArguments:", &Self::performOperationCreateFileobject},
      Entry{"performOperationRenameFileobjectWithArguments:", &Self::performOperationRenameFileobject},
      Entry{"performOperationDeleteFileobjectsWithArguments:feedbackConnection:",
            &Self::performOperationDeleteFileobjects},
      Entry{"performOperationDeleteFoldercontentsWithArguments:feedbackConnection:",
            &Self::performOperationDeleteFoldercontents},
      Entry{"performOperationInspectFileobjectWithArguments:", &Self::performOperationInspectFileobject},
      Entry{"performOperationTouchFileobjectWithArguments:", &Self::performOperationTouchFileobject},
      Entry{"performOperationModifyProtectionWithArguments:", &Self::performOperationModifyProtection},
      Entry{"performOperationModifyHfsattrWithArguments:", &Self::performOperationModifyHfsattr},
      Entry{"performOperationCreateLinkWithArguments:", &Self::performOperationCreateLink},
      Entry{"performOperationSearchAgedfilesWithArguments:feedbackConnection:", &Self::performOperationSearchAgedfiles},
      Entry{"performOperationSearchFilenamesWithArguments:feedbackConnection:", &Self::performOperationSearchFilenames},
      Entry{"performOperationSearchPatternsWithArguments:feedbackConnection:", &Self::performOperationSearchPatterns},
      Entry{"performOperationSearchFileorphansWithArguments:feedbackConnection:",
            &Self::performOperationSearchFileorphans},
      Entry{"performOperationInspectStoragesizeWithArguments:", &Self::performOperationInspectStoragesize},
      Entry{"performOperationModifyKernelsettingWithArguments:", &Self::performOperationModifyKernelsetting},
      Entry{"performOperationModifyNvramWithArguments:", &Self::performOperationModifyNvram},
      Entry{"performOperationModifyPreferencesWithArguments:", &Self::performOperationModifyPreferences},
      Entry{"performOperationModifySysconfWithArguments:", &Self::performOperationModifySysconf},
      Entry{"performOperationSignalProcessWithArguments:", &Self::performOperationSignalProcess},
      Entry{"performOperationModifyAclWithArguments:", &Self::performOperationModifyAcl},
      Entry{"performOperationPropPermissionsWithArguments:feedbackConnection:", &Self::performOperationPropPermissions},
      Entry{"performOperationExecuteUtilityWithArguments:feedbackConnection:", &Self::performOperationExecuteUtility},
      Entry{"performOperationEnableIpvsixWithArguments:", &Self::performOperationEnableIpvsix},
      Entry{"performOperationRenameStashfolderWithArguments:", &Self::performOperationRenameStashfolder},
      Entry{"performOperationCreateInstallmediaWithArguments:feedbackConnection:",
            &Self::performOperationCreateInstallmedia},
      Entry{"performOperationEraseDiskblocksWithArguments:", &Self::performOperationEraseDiskblocks},
      Entry{"performOperationWriteSmcvalueWithArguments:", &Self::performOperationWriteSmcvalue},
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

}  // namespace vantrell
