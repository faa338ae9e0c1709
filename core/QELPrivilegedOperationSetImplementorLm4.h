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

  ErrorOrNil performOperationDeleteFileobjects(const Array& arguments, Feedback* feedbackConnection);
  ErrorOrNil performOperationInspectFileobject(const Array& arguments);
  ErrorOrNil performOperationExecuteUtility(const Array& arguments, Feedback* feedbackConnection);
};

}  // namespace vantrell
