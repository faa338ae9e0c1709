// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "foundation/Result.h"

namespace vantrell::host {

/// Content descriptors of executables in this host's own format, where that is not the Mach-O format.
class ExecutableDescriptor {
 public:
  virtual ~ExecutableDescriptor() = default;

  /// One descriptor per part of the file, 40 lower-case hexadecimal digits each: SHA-1 over section contents, unchanged
  /// by stripping or signing, changed by any byte of code or data. POSIX error 79 stands for "not this host's format";
  /// a host without a format of its own always says so. On Linux: ELF, the contents of the allocated sections that
  /// occupy file space, in ascending byte order of their names, the last of two with one name counting.
  virtual Result<std::vector<std::string>> descriptorsForFileAtPath(std::string_view path) = 0;
};

}  // namespace vantrell::host
