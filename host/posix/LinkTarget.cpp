// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/LinkTarget.h"

#include <climits>

#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

Result<std::string> readLinkTarget(int folder, const char* name) {
  char target[PATH_MAX];
  const ssize_t length = readlinkat(folder, name, target, sizeof target);
  if (length < 0) return errnoFailure();
  if (static_cast<std::size_t>(length) == sizeof target) return posixFailure(posix::kNameTooLong);
  return std::string(target, static_cast<std::size_t>(length));
}

}  // namespace vantrell::host
