// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include <sys/mount.h>

namespace vantrell::tests {

/// A file system in memory, or another folder once more, mounted on a folder until the end of the scope. Takes root.
class MountedFileSystem {
 public:
  explicit MountedFileSystem(std::string folder) : folder_(std::move(folder)) {
    require(mount("none", folder_.c_str(), "tmpfs", 0, "size=16m") == 0);
  }
  MountedFileSystem(std::string folder, const std::string& boundFolder) : folder_(std::move(folder)) {
    require(mount(boundFolder.c_str(), folder_.c_str(), nullptr, MS_BIND, nullptr) == 0);
  }
  MountedFileSystem(const MountedFileSystem&) = delete;
  MountedFileSystem& operator=(const MountedFileSystem&) = delete;
  ~MountedFileSystem() { umount2(folder_.c_str(), MNT_DETACH); }

  void makeReadOnly() { require(mount("none", folder_.c_str(), "tmpfs", MS_REMOUNT | MS_RDONLY, nullptr) == 0); }

 private:
  void require(bool succeeded) const {
    if (!succeeded) throw std::system_error(errno, std::system_category(), "mounting on " + folder_);
  }
  std::string folder_;
};

}  // namespace vantrell::tests
