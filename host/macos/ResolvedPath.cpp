// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/ResolvedPath.h"

#include <cstdlib>
#include <memory>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

// The C++ library's own function came with macOS 10.15.
Result<std::string> resolvedPath(const std::string& path) {
  struct Free {
    void operator()(char* text) const noexcept { std::free(text); }
  };
  if (path.find('\0') != std::string::npos) return posixFailure(posix::kNoEntry);
  const std::unique_ptr<char, Free> resolved(realpath(path.c_str(), nullptr));
  if (!resolved) return errnoFailure();
  return std::string(resolved.get());
}

}  // namespace vantrell::host
