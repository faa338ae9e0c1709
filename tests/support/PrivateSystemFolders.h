// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/MountedFileSystem.h"
#include "tests/support/TemporaryFolder.h"

namespace vantrell::tests {

/// The folders of system programs as this thread, and whatever it starts from now on, sees them: what is put there lies
/// in memory and is gone at the end of the scope; the rest of the machine never sees it. Takes root. Throws
/// std::system_error where the system does not let us have a mount namespace or overlays.
class PrivateSystemFolders {
 public:
  PrivateSystemFolders() {
    require(unshare(CLONE_NEWNS) == 0, "the mount namespace");
    require(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "a private mount tree");
    memory_ = std::make_unique<MountedFileSystem>(store_.path());
    for (const char* folder : {"/usr/bin", "/usr/sbin", "/usr/libexec"}) {
      if (std::filesystem::is_directory(folder)) overlays_.push_back(std::make_unique<Overlay>(store_, folder));
    }
  }

  /// Puts a shell script in the place of a system program, owned and protected as those are.
  void putScript(const std::string& path, const std::string& lines) const {
    std::filesystem::remove(path);
    std::ofstream file(path);
    file << "#!/bin/sh\n" << lines << "\n";
    file.close();
    require(file && chown(path.c_str(), 0, 0) == 0 && chmod(path.c_str(), 0755) == 0, path);
  }

 private:
  static void require(bool succeeded, const std::string& what) {
    if (!succeeded) throw std::system_error(errno, std::system_category(), what);
  }

  class Overlay {
   public:
    Overlay(const TemporaryFolder& store, std::string folder) : folder_(std::move(folder)) {
      const auto name = folder_.substr(folder_.rfind('/') + 1);
      const auto upper = store.makeFolder(name + "/upper");
      const auto work = store.makeFolder(name + "/work");
      // The folder looks as its upper one does.
      require(chown(upper.c_str(), 0, 0) == 0 && chmod(upper.c_str(), 0755) == 0, upper);
      const auto options = "lowerdir=" + folder_ + ",upperdir=" + upper + ",workdir=" + work;
      require(mount("none", folder_.c_str(), "overlay", 0, options.c_str()) == 0, "an overlay on " + folder_);
    }
    Overlay(const Overlay&) = delete;
    Overlay& operator=(const Overlay&) = delete;
    ~Overlay() { umount2(folder_.c_str(), MNT_DETACH); }

   private:
    std::string folder_;
  };

  TemporaryFolder store_;
  std::unique_ptr<MountedFileSystem> memory_;
  std::vector<std::unique_ptr<Overlay>> overlays_;
};

}  // namespace vantrell::tests
