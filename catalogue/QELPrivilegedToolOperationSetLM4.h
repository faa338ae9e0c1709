// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "catalogue/QELPrivilegedToolOperationSet.h"

namespace vantrell {

/// The operations of the implementation "lm4".
class QELPrivilegedToolOperationSetLM4 final : public QELPrivilegedToolOperationSet {
 public:
  static constexpr char kClassName[] = "QELPrivilegedToolOperationSetLM4";

  /// Rows that are inconsistent are reported to the default log.
  explicit QELPrivilegedToolOperationSetLM4(host::SystemLog& systemLog);

  /// The one instance of the process, made at the first call; later calls ignore their argument.
  static QELPrivilegedToolOperationSetLM4& privilegedOperationSet(host::SystemLog& systemLog);

  std::string fileNameForHelper() const override;
};

}  // namespace vantrell
