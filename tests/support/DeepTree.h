// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <stdexcept>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantrell::tests {

/// Makes folders called `name` within each other, far beyond what one path could name, with an empty file called "file"
/// in each when asked.
inline void makeDeepTree(const std::string& path, int levels, const char* name = "d", bool withFiles = false) {
  int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int level = 0; level < levels && folder >= 0; ++level) {
    if (withFiles) close(openat(folder, "file", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    const bool made = mkdirat(folder, name, 0700) == 0;
    const int inner = made ? openat(folder, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC) : -1;
    close(folder);
    folder = inner;
  }
  if (folder < 0) throw std::runtime_error("no deep tree could be made below " + path);
  close(folder);
}

}  // namespace vantrell::tests
