// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "bundles/SystemBundle.h"

#include <cstdint>

#include "bundles/InformationFile.h"
#include "foundation/FileManager.h"
#include "foundation/PathUtilities.h"

namespace vantrell {
namespace {

bool isFolder(const std::string& path, host::FileSystem& fileSystem) {
  bool isDirectory = false;
  return FileManager(fileSystem).fileExistsAtPath(path, &isDirectory) && isDirectory;
}

std::string resourcePathOf(const std::string& bundlePath, host::FileSystem& fileSystem) {
  const auto contents = stringByAppendingPathComponent(bundlePath, "Contents");
  if (isFolder(contents, fileSystem)) return stringByAppendingPathComponent(contents, "Resources");
  auto resources = stringByAppendingPathComponent(bundlePath, "Resources");
  return isFolder(resources, fileSystem) ? resources : bundlePath;
}

}  // namespace

std::optional<SystemBundle> SystemBundle::bundleWithPath(const std::string& path, host::FileSystem& fileSystem) {
  if (path.empty() || !isFolder(path, fileSystem)) return std::nullopt;
  return SystemBundle(path, resourcePathOf(path, fileSystem), fileSystem);
}

std::optional<std::string> SystemBundle::pathForResource(std::string_view name, std::string_view ofType) const {
  if (name.empty() || name.contains('/') || ofType.contains('/')) return std::nullopt;
  std::string fileName(name);
  if (!ofType.empty()) fileName.append(".").append(ofType);
  FileManager fileManager(*fileSystem_);
  auto path = stringByAppendingPathComponent(resourcePath_, fileName);
  if (fileManager.fileExistsAtPath(path)) return path;
  const auto folder = developmentFolder();
  if (!folder) return std::nullopt;
  path = stringByAppendingPathComponent(*folder, fileName);
  return fileManager.fileExistsAtPath(path) ? std::optional(path) : std::nullopt;
}

std::optional<std::string> SystemBundle::developmentFolder() const {
  for (std::uint64_t style = 0; style < kPackageStyles; ++style) {
    const auto path = infoPathForBundlePath(bundlePath_, style);
    bool isDirectory = false;
    if (!path || !FileManager(*fileSystem_).fileExistsAtPath(*path, &isDirectory) || isDirectory) continue;
    const auto information = dictionaryFromPropertyListFile(*path, *fileSystem_);
    const auto region = information ? textUnder(*information, "CFBundleDevelopmentRegion") : std::nullopt;
    if (!region || region->empty() || region->contains('/')) return std::nullopt;
    return stringByAppendingPathComponent(resourcePath_, *region + ".lproj");
  }
  return std::nullopt;
}

}  // namespace vantrell
