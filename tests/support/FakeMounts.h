// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <filesystem>
#include <set>
#include <string>
#include <system_error>

#include "foundation/PosixCodes.h"
#include "host/Mounts.h"

namespace vantrell::tests {

/// Real folders of which those that were named, and "/", count as mount points.
class FakeMounts final : public host::Mounts {
 public:
  void addMountPoint(const std::string& path) { mountPoints_.insert(path); }

  Result<std::string> mountPointNameForPath(const std::string& path) override {
    if (path.find('\0') != std::string::npos) return posixFailure(posix::kInvalidArgument);
    std::error_code error;
    auto place = std::filesystem::canonical(path, error);
    if (error) return posixFailure(posix::kNoEntry);
    while (!mountPoints_.contains(place.string())) place = place.parent_path();
    return place.string();
  }

 private:
  std::set<std::string> mountPoints_{"/"};
};

}  // namespace vantrell::tests
