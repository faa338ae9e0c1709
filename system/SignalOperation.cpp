// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/OperationArguments.h"
#include "foundation/PosixCodes.h"
#include "system/SystemSettingOperations.h"

namespace vantrell {

ErrorOrNil signalProcess(const Array& arguments, host::ProcessSignals& processSignals) {
  const auto* process = numberAt(arguments, 0);
  const auto* signal = numberAt(arguments, 1);
  // Lower identifiers mean groups of processes, or all of them.
  if (!process || !signal || process->int32Value() < 1) return Error::posix(posix::kInvalidArgument);
  return processSignals.send(signal->int32Value(), process->int32Value());
}

}  // namespace vantrell
