// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cerrno>
#include <cstdint>

#include "foundation/Error.h"
#include "foundation/Result.h"

namespace vantrell::host {

/// Darwin's number for one of this kernel's error numbers. The only translator: whatever leaves a host's folder has
/// been through it. Numbers without a counterpart become 5 (input/output error).
std::int64_t darwinErrorNumber(int number) noexcept;

inline Error errorFromErrno(int number = errno) {
  return Error::posix(darwinErrorNumber(number));
}
inline std::unexpected<Error> errnoFailure(int number = errno) {
  return failure(errorFromErrno(number));
}

}  // namespace vantrell::host
