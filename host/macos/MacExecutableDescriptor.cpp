// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacExecutableDescriptor.h"

#include "foundation/PosixCodes.h"

namespace vantrell::host {

Result<std::vector<std::string>> MacExecutableDescriptor::descriptorsForFileAtPath(std::string_view) {
  return posixFailure(posix::kWrongFormat);
}

}  // namespace vantrell::host
