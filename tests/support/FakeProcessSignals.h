// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <map>
#include <vector>

#include "foundation/PosixCodes.h"
#include "host/ProcessSignals.h"

namespace vantrell::tests {

/// Processes that take down which signals they got.
class FakeProcessSignals final : public host::ProcessSignals {
 public:
  static constexpr std::int32_t kHighestSignal = 64;
  static constexpr std::int64_t kNoSuchProcess = 3;  // ESRCH

  using Processes = std::map<std::int32_t, std::vector<std::int32_t>>;

  ErrorOrNil send(std::int32_t signal, std::int32_t toProcess) override {
    ++calls;
    if (toProcess < 1 || signal < 0 || signal > kHighestSignal) return Error::posix(posix::kInvalidArgument);
    const auto found = processes.find(toProcess);
    if (found == processes.end()) return Error::posix(kNoSuchProcess);
    if (failure) return failure;
    if (signal != 0) found->second.push_back(signal);
    return std::nullopt;
  }

  Processes processes;
  ErrorOrNil failure;  // of every process that there is
  int calls = 0;
};

}  // namespace vantrell::tests
