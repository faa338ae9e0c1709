// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/PosixCodes.h"
#include "system/SettingArguments.h"
#include "system/SystemSettingOperations.h"

namespace vantrell {

ErrorOrNil modifyKernelsetting(const Array& arguments, host::KernelSettings& kernelSettings) {
  const auto* name = nameArgument(arguments, 0);
  const auto* value = numberArgument(arguments, 1);
  if (!name || !value) return Error::posix(posix::kInvalidArgument);
  return kernelSettings.set(*name, value->signedValue());
}

}  // namespace vantrell
