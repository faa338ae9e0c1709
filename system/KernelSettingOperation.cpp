// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "catalogue/OperationArguments.h"
#include "foundation/PosixCodes.h"
#include "system/SystemSettingOperations.h"

namespace vantrell {

ErrorOrNil modifyKernelsetting(const Array& arguments, host::KernelSettings& kernelSettings) {
  const auto* name = nameAt(arguments, 0);
  const auto* value = numberAt(arguments, 1);
  if (!name || !value) return Error::posix(posix::kInvalidArgument);
  return kernelSettings.set(*name, value->signedValue());
}

}  // namespace vantrell
