// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixProcessSignals.h"

#include <csignal>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

ErrorOrNil PosixProcessSignals::send(std::int32_t signal, std::int32_t toProcess) {
  if (toProcess < 1) return Error::posix(posix::kInvalidArgument);
  if (kill(toProcess, signal) != 0) return errorFromErrno();
  return std::nullopt;
}

}  // namespace vantrell::host
