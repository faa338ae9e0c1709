// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "host/KernelSettings.h"

namespace vantrell::tests {

/// Kernel settings with the two variables "first" (0) and "group.second" (0), and a look at their values.
struct KernelSettingsCandidate {
  virtual ~KernelSettingsCandidate() = default;
  virtual host::KernelSettings& settings() = 0;
  virtual std::int64_t valueOf(const std::string& name) = 0;
};

struct KernelSettingsImplementation {
  const char* name;
  std::function<std::unique_ptr<KernelSettingsCandidate>()> make;
  friend void PrintTo(const KernelSettingsImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

/// This host's implementations of which such a candidate can be made: each host's tests define this.
std::vector<KernelSettingsImplementation> kernelSettingsOfThisHost();

}  // namespace vantrell::tests
