// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacKernelSettings.h"

#include <string>

#include <sys/sysctl.h>
#include <sys/types.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/KernelVariableNames.h"

namespace vantrell::host {

// The kernel itself would look past dots at a name's end.
ErrorOrNil MacKernelSettings::set(std::string_view name, std::int64_t value) {
  if (!canBeKernelVariable(name)) return Error::posix(posix::kNoEntry);
  if (sysctlbyname(std::string(name).c_str(), nullptr, nullptr, &value, sizeof value) != 0) return errorFromErrno();
  return std::nullopt;
}

}  // namespace vantrell::host
