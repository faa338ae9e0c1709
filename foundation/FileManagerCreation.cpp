// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "foundation/FileManager.h"
#include "foundation/FileManagerErrors.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"

namespace vantrell {

using host::FollowLinks;

namespace {

// What the platform's usual file-creation mask leaves.
constexpr std::uint16_t kFolderPermissions = 0755;
constexpr std::uint16_t kFilePermissions = 0644;

std::uint16_t permissionsIn(const Dictionary& attributes, std::uint16_t otherwise) {
  const auto* value = attributes.find(NSFilePosixPermissions);
  const auto* number = value ? value->asNumber() : nullptr;
  return number ? static_cast<std::uint16_t>(number->unsigned32Value() & 07777) : otherwise;
}

// The folders that a path leads through, outermost first, itself included.
std::vector<std::string> foldersOnTheWayTo(const std::string& path) {
  std::vector<std::string> folders;
  for (std::size_t end = 0; end < path.size();) {
    const auto start = path.find_first_not_of('/', end);
    if (start == std::string::npos) break;
    end = std::min(path.find('/', start), path.size());
    folders.push_back(path.substr(0, end));
  }
  return folders;
}

bool isSameObject(const host::FileStatus& one, const host::FileStatus& other) {
  return one.device == other.device && one.inode == other.inode;
}

}  // namespace

ErrorOrNil FileManager::createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories,
                                              const Dictionary& attributes) {
  if (withIntermediateDirectories) {
    bool isDirectory = false;
    if (fileExistsAtPath(path, &isDirectory) && isDirectory) return std::nullopt;
    auto folders = foldersOnTheWayTo(path);
    if (!folders.empty()) folders.pop_back();
    for (const auto& folder : folders) {
      if (fileExistsAtPath(folder, &isDirectory) && isDirectory) continue;
      const auto error = createDirectoryAtPath(folder, false);
      // Someone else may have been faster.
      if (error && !(fileExistsAtPath(folder, &isDirectory) && isDirectory)) return error;
    }
  }
  auto location = fileSystem_.locate(path);
  if (!location) {
    const bool exists = fileSystem_.status(path, FollowLinks::No).has_value();
    return fileWritingError(exists ? Error::posix(posix::kExists) : location.error(), path);
  }
  const auto permissions = permissionsIn(attributes, kFolderPermissions);
  if (const auto error = location->folder->makeDirectory(location->name.c_str(), permissions))
    return fileWritingError(*error, path);
  if (attributes.empty()) return std::nullopt;
  const auto made = location->folder->openObject(location->name.c_str(), FollowLinks::No);
  if (!made) return fileWritingError(made.error(), path);
  const auto status = (*made)->status();
  if (!status) return fileWritingError(status.error(), path);
  // Whoever owns the folder outside may have exchanged it by now. Folders have one name only, so that at worst one of
  // their own gets the attributes.
  if (!status->isDirectory()) return fileWritingError(Error::posix(posix::kNotDirectory), path);
  return setAttributes(attributes, **made, path);
}

bool FileManager::createFileAtPath(const std::string& path, DataView contents, const Dictionary& attributes) {
  auto location = fileSystem_.locate(path);
  if (!location) return false;
  auto& folder = *location->folder;
  const auto* name = location->name.c_str();
  const auto writer = folder.createFile(name, permissionsIn(attributes, kFilePermissions));
  if (!writer || (*writer)->write(contents)) return false;
  if (attributes.empty()) return true;
  const auto made = folder.openObject(name, FollowLinks::No);
  if (!made) return false;
  const auto status = (*made)->status();
  const auto written = (*writer)->status();
  return status && written && isSameObject(*status, *written) && !setAttributes(attributes, **made, path);
}

ErrorOrNil FileManager::createSymbolicLinkAtPath(const std::string& path, const std::string& withDestinationPath) {
  auto location = fileSystem_.locate(path);
  if (!location) {
    const bool exists = fileSystem_.status(path, FollowLinks::No).has_value();
    return fileWritingError(exists ? Error::posix(posix::kExists) : location.error(), path);
  }
  const auto error = location->folder->makeSymbolicLink(location->name.c_str(), withDestinationPath);
  return error ? ErrorOrNil(fileWritingError(*error, path)) : std::nullopt;
}

}  // namespace vantrell
