// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <string>

#include "host/macos/MacMounts.h"
#include "tests/host/MountsContract.h"
#include "tests/macos/MountedFileSystem.h"

namespace vantrell::tests {
namespace {

class RealMounts final : public WorldWithMount {
 public:
  explicit RealMounts(const std::string& mountPoint) : mounted_(mountPoint) {}
  host::Mounts& mounts() override { return mounts_; }

 private:
  MountedFileSystem mounted_;
  host::MacMounts mounts_;
};

}  // namespace

std::unique_ptr<WorldWithMount> realWorldWithMount(const std::string& mountPoint) {
  return std::make_unique<RealMounts>(mountPoint);
}

}  // namespace vantrell::tests
