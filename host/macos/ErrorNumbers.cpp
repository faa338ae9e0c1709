// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

std::int64_t darwinErrorNumber(int number) noexcept {
  return number;
}

}  // namespace vantrell::host
