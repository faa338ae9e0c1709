// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <utility>

#include <unistd.h>

namespace vantrell::tests {

/// A file system of 16 MiB in an image of its own, mounted on a folder until the end of the scope. Takes root. The
/// paths are of the tests' own making: no quoting is needed.
class MountedFileSystem {
 public:
  explicit MountedFileSystem(std::string folder) : folder_(std::move(folder)), image_(folder_ + ".dmg") {
    run("hdiutil create -quiet -size 16m -fs HFS+ -layout NONE '" + image_ + "'");
    run("hdiutil attach -quiet -nobrowse -owners on -mountpoint '" + folder_ + "' '" + image_ + "'");
  }
  MountedFileSystem(const MountedFileSystem&) = delete;
  MountedFileSystem& operator=(const MountedFileSystem&) = delete;
  ~MountedFileSystem() {
    static_cast<void>(std::system(("hdiutil detach -quiet -force '" + folder_ + "'").c_str()));
    unlink(image_.c_str());
  }

 private:
  static void run(const std::string& line) {
    if (std::system(line.c_str()) != 0) throw std::runtime_error("failed: " + line);
  }

  std::string folder_;
  std::string image_;
};

}  // namespace vantrell::tests
