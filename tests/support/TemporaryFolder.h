// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

#include <gtest/gtest.h>
#include <unistd.h>

namespace vantrell::tests {

/// A fresh folder, gone with everything in it at the end of the scope, whatever flags its contents bear by then.
class TemporaryFolder {
 public:
  TemporaryFolder() : path_(testing::TempDir() + "vantrell-XXXXXX") {
    if (!mkdtemp(path_.data())) throw std::runtime_error("no temporary folder could be made at " + path_);
    // Some systems give it the group of the folder around it, and what is made in it, too.
    if (chown(path_.c_str(), static_cast<uid_t>(-1), getegid()) != 0)
      throw std::runtime_error("the group of " + path_ + " could not be set");
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
    if (!error) return;
    // Flags, or a tree too deep for the library. The path is of our own making: no quoting is needed but for TempDir.
    const auto clear = "chattr -R -f -i -a '" + path_ + "' >/dev/null 2>&1; chflags -R 0 '" + path_ +
                       "' >/dev/null 2>&1; rm -rf '" + path_ + "'";
    if (std::system(clear.c_str()) != 0) ADD_FAILURE() << path_ << " could not be removed";
  }

  const std::string& path() const noexcept { return path_; }
  /// The path of `name` inside.
  std::string path(std::string_view name) const { return path_ + "/" + std::string(name); }

  /// Makes the file `name` with this content and returns its path.
  std::string makeFile(std::string_view name, std::string_view content = "content") const {
    std::ofstream file(path(name), std::ios::binary);
    file << content;
    if (!file.flush()) throw std::runtime_error("no file could be made at " + path(name));
    return path(name);
  }
  /// Makes the folder `name`, and those on the way to it, and returns its path.
  std::string makeFolder(std::string_view name) const {
    std::filesystem::create_directories(path(name));
    return path(name);
  }
  /// Makes a symbolic link `name` and returns its path.
  std::string makeLink(std::string_view name, std::string_view target) const {
    std::filesystem::create_symlink(target, path(name));
    return path(name);
  }

 private:
  std::string path_;
};

}  // namespace vantrell::tests
