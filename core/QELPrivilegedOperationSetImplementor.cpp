// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "core/QELPrivilegedOperationSetImplementor.h"

namespace vantrell {

void QELPrivilegedOperationSetImplementor::receiveTaskOutput(std::optional<DataView> data,
                                                             std::optional<bool> isError) {
  if (!data || !isError) return;
  auto& buffer = *isError ? incomingErrorData_ : incomingOutputData_;
  buffer.insert(buffer.end(), data->begin(), data->end());
}

}  // namespace vantrell
