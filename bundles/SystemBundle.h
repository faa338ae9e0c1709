// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "host/FileSystem.h"

namespace vantrell {

/// A package as the platform's resource look-up sees it, by its folders alone: what a style says counts for the
/// inspector, not here. The file system must outlive it.
class SystemBundle {
 public:
  /// Nothing where there is no folder.
  static std::optional<SystemBundle> bundleWithPath(const std::string& path, host::FileSystem& fileSystem);

  const std::string& bundlePath() const noexcept { return bundlePath_; }

  /// "Contents/Resources" where there is a folder "Contents", else "Resources" where there is one, else the package.
  const std::string& resourcePath() const noexcept { return resourcePath_; }

  /// The resource "NAME.TYPE": the one for all languages, else that of the language that the package was developed in,
  /// which stands for the user's languages (this process works for none). Nothing where there is neither, and for a
  /// name or type that would lead elsewhere.
  std::optional<std::string> pathForResource(std::string_view name, std::string_view ofType) const;

 private:
  SystemBundle(std::string bundlePath, std::string resourcePath, host::FileSystem& fileSystem)
      : bundlePath_(std::move(bundlePath)), resourcePath_(std::move(resourcePath)), fileSystem_(&fileSystem) {}

  std::optional<std::string> developmentFolder() const;

  std::string bundlePath_;
  std::string resourcePath_;
  host::FileSystem* fileSystem_;
};

}  // namespace vantrell
