// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/FileManager.h"

#include <utility>

#include "foundation/FileManagerErrors.h"
#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "foundation/TreeRemoval.h"
#include "foundation/Value.h"

namespace vantrell {

using host::FileType;
using host::FollowLinks;

std::string_view fileTypeText(FileType type) noexcept {
  switch (type) {
    case FileType::Regular:
      return "NSFileTypeRegular";
    case FileType::Directory:
      return "NSFileTypeDirectory";
    case FileType::SymbolicLink:
      return "NSFileTypeSymbolicLink";
    case FileType::Socket:
      return "NSFileTypeSocket";
    case FileType::CharacterDevice:
      return "NSFileTypeCharacterSpecial";
    case FileType::BlockDevice:
      return "NSFileTypeBlockSpecial";
    case FileType::Fifo:
    case FileType::Whiteout:
    case FileType::Unknown:
      break;
  }
  return "NSFileTypeUnknown";
}

bool FileManager::fileExistsAtPath(const std::string& path, bool* isDirectory) {
  const auto status = fileSystem_.status(path, FollowLinks::Yes);
  if (isDirectory) *isDirectory = status && status->isDirectory();
  return status.has_value();
}

Result<Dictionary> FileManager::attributesOfItemAtPath(const std::string& path) {
  const auto object = fileSystem_.openObject(path, FollowLinks::No);
  if (!object) return failure(fileReadingError(object.error(), path));
  auto attributes = attributesOf(**object, fileSystem_.finderInfoAttributeName());
  if (!attributes) return failure(fileReadingError(attributes.error(), path));
  return attributes;
}

ErrorOrNil FileManager::setAttributes(const Dictionary& attributes, const std::string& ofItemAtPath) {
  const auto object = fileSystem_.openObject(ofItemAtPath, FollowLinks::Yes);
  if (!object) return fileWritingError(object.error(), ofItemAtPath);
  return setAttributes(attributes, **object, ofItemAtPath);
}

ErrorOrNil FileManager::setAttributes(const Dictionary& attributes, host::ObjectHandle& ofItem,
                                      const std::string& path) {
  const auto error = setAttributesOf(ofItem, attributes, fileSystem_.finderInfoAttributeName());
  return error ? ErrorOrNil(fileWritingError(*error, path)) : std::nullopt;
}

ErrorOrNil FileManager::setHiddenState(bool hidden, const std::string& ofItemAtPath) {
  const auto object = fileSystem_.openObject(ofItemAtPath, FollowLinks::Yes);
  if (!object) return fileWritingError(object.error(), ofItemAtPath);
  const auto error = setHiddenStateOf(**object, hidden, fileSystem_.finderInfoAttributeName());
  return error ? ErrorOrNil(fileWritingError(*error, ofItemAtPath)) : std::nullopt;
}

Result<std::vector<std::string>> FileManager::contentsOfDirectoryAtPath(const std::string& path) {
  const auto folder = fileSystem_.openDirectory(path, FollowLinks::Yes);
  if (!folder) return failure(fileReadingError(folder.error(), path));
  std::vector<std::string> names;
  for (;;) {
    const auto entry = (*folder)->next();
    if (!entry) return failure(fileReadingError(entry.error(), path));
    if (!*entry) return names;
    names.emplace_back((*entry)->name);
  }
}

FileManagerEnumerator FileManager::enumeratorAtPath(const std::string& path) {
  auto folder = fileSystem_.openDirectory(path, FollowLinks::Yes);
  return {folder ? std::move(*folder) : nullptr, path};
}

ErrorOrNil FileManager::removeItemAtPath(const std::string& path) {
  auto location = fileSystem_.locate(path);
  if (location) return removeItem(*location->folder, location->name, path);
  // Of paths without a last component, folders are refused by name; what is left is no object at all.
  const auto status = fileSystem_.status(path, FollowLinks::No);
  if (status && status->isDirectory()) {
    if (auto refusal = refusalToRemoveFolder(*status, path)) return refusal;
  }
  return fileWritingError(status ? location.error() : status.error(), path, "Remove");
}

ErrorOrNil FileManager::removeItem(host::DirectoryHandle& folder, const std::string& name, const std::string& path) {
  const std::string shown(pathWithoutTrailingSlashes(path));
  const auto status = folder.statusOf(name.c_str(), FollowLinks::No);
  if (!status) return fileWritingError(status.error(), shown, "Remove");
  if (status->isDirectory()) {
    if (auto refusal = refusalToRemoveFolder(*status, shown)) return refusal;
    return removeTree(folder, name, shown);
  }
  if (const auto error = folder.removeFile(name.c_str())) return fileWritingError(*error, shown, "Remove");
  return std::nullopt;
}

ErrorOrNil FileManager::refusalToRemoveFolderAtPath(const std::string& path) {
  const auto status = fileSystem_.status(path, FollowLinks::No);
  return status ? refusalToRemoveFolder(*status, path) : std::nullopt;
}

ErrorOrNil FileManager::refusalToRemoveFolder(const host::FileStatus& status, const std::string& path) {
  const auto name = lastPathComponent(path);
  if (name == "." || name == "..") return fileWritingError(Error::posix(posix::kInvalidArgument), path, "Remove");
  const auto root = fileSystem_.status("/", FollowLinks::No);
  if (root && status.device == root->device && status.inode == root->inode)
    return fileWritingError(Error::posix(posix::kBusy), path, "Remove");
  return std::nullopt;
}

}  // namespace vantrell
