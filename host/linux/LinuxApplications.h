// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "host/Applications.h"
#include "host/FileSystem.h"

namespace vantrell::host {

/// Nobody keeps a register of applications here: the usual folders are looked through, and the date is the attribute
/// that macOS leaves with the item. The file system must outlive it.
class LinuxApplications final : public Applications {
 public:
  /// What a look-up costs at most; what lies beyond isn't found.
  struct Limits {
    std::size_t depth = 3;  // folders within folders, the outermost included
    std::size_t entries = 50'000;
    std::size_t applications = 5'000;  // whose information is read
  };

  LinuxApplications(FileSystem& fileSystem, std::vector<std::string> folders, Limits limits)
      : fileSystem_(fileSystem), folders_(std::move(folders)), limits_(limits) {}
  explicit LinuxApplications(FileSystem& fileSystem)
      : LinuxApplications(fileSystem, usualApplicationFolders(), Limits()) {}

  std::vector<std::string> locationsOfApplicationsWithIdentifier(const std::string& identifier) override;
  std::optional<Date> lastUsedDateOfItemAtPath(const std::string& path) override;

  /// Those of the system, of all users, and of the user whom this process works for. Other users' homes are not
  /// looked into: what is found there would be of their making.
  static std::vector<std::string> usualApplicationFolders();

 private:
  FileSystem& fileSystem_;
  std::vector<std::string> folders_;
  Limits limits_;
};

}  // namespace vantrell::host
