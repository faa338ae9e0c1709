// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacMounts.h"

#include <cstring>

#include <sys/mount.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

Result<std::string> MacMounts::mountPointNameForPath(const std::string& path) {
  if (path.contains('\0')) return posixFailure(posix::kInvalidArgument);
  struct statfs status;
  if (statfs(path.c_str(), &status) != 0) return errnoFailure();
  return std::string(status.f_mntonname, strnlen(status.f_mntonname, sizeof status.f_mntonname));
}

}  // namespace vantrell::host
