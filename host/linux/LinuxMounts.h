// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <utility>

#include "host/Mounts.h"

namespace vantrell::host {

/// The kernel's own table of this process's mounts.
class LinuxMounts final : public Mounts {
 public:
  explicit LinuxMounts(std::string table = "/proc/self/mountinfo") : table_(std::move(table)) {}

  Result<std::string> mountPointNameForPath(const std::string& path) override;

 private:
  std::string table_;
};

}  // namespace vantrell::host
