// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/FileManager.h"

#include <algorithm>
#include <cstddef>
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
  const auto status = fileSystem_.status(path, FollowLinks::No);
  if (!status) return failure(fileReadingError(status.error(), path));
  return Dictionary{{NSFileType, fileTypeText(status->type)},   {NSFileSize, status->size},
                    {NSFileModificationDate, status->modified}, {NSFilePosixPermissions, status->permissions},
                    {NSFileOwnerAccountID, status->owner},      {NSFileGroupOwnerAccountID, status->group},
                    {NSFileReferenceCount, status->links},      {NSFileSystemNumber, status->device},
                    {NSFileSystemFileNumber, status->inode}};
}

ErrorOrNil FileManager::removeItemAtPath(const std::string& given) {
  // A slash at the end would have the kernel follow a link, and that folder's contents would go.
  const std::string path(pathWithoutTrailingSlashes(given));
  const auto status = fileSystem_.status(path, FollowLinks::No);
  if (!status) return fileWritingError(status.error(), path, "Remove");
  if (status->isDirectory()) {
    if (auto refusal = refusalToRemoveFolderAtPath(path)) return refusal;
    return removeTree(fileSystem_, path);
  }
  if (const auto error = fileSystem_.removeFile(path)) return fileWritingError(*error, path, "Remove");
  return std::nullopt;
}

ErrorOrNil FileManager::refusalToRemoveFolderAtPath(const std::string& path) {
  const auto name = lastPathComponent(path);
  if (name == "." || name == "..") return fileWritingError(Error::posix(posix::kInvalidArgument), path, "Remove");
  const auto object = fileSystem_.status(path, FollowLinks::No);
  const auto root = fileSystem_.status("/", FollowLinks::No);
  if (object && root && object->device == root->device && object->inode == root->inode)
    return fileWritingError(Error::posix(posix::kBusy), path, "Remove");
  return std::nullopt;
}

namespace {

constexpr unsigned kMaximumLinks = 40;  // as the kernel's own bound

// The components of a path one after the other, without copying what is left each time: links can make it long.
class ComponentReader {
 public:
  explicit ComponentReader(std::string path) : path_(std::move(path)) {}

  /// Empty at the end.
  std::string_view next() {
    start_ = std::min(path_.find_first_not_of('/', end_), path_.size());
    end_ = std::min(path_.find('/', start_), path_.size());
    return std::string_view(path_).substr(start_, end_ - start_);
  }
  /// The last component read, and all after it.
  std::string_view rest() const { return std::string_view(path_).substr(start_); }
  /// What a link says in place of the last component read.
  void replaceLast(const std::string& target) {
    path_ = target + path_.substr(end_);
    end_ = 0;
  }

 private:
  std::string path_;
  std::size_t start_ = 0;
  std::size_t end_ = 0;
};

}  // namespace

std::string FileManager::stringByResolvingSymlinksInPath(const std::string& path) {
  if (path.empty() || path.front() != '/') return path;
  std::string resolved = "/";
  ComponentReader reader(path);
  unsigned links = 0;
  for (;;) {
    const auto component = reader.next();
    if (component.empty()) return resolved;
    if (component == ".") continue;
    if (component == "..") {
      resolved = stringByDeletingLastPathComponent(resolved);
      continue;
    }
    auto candidate = stringByAppendingPathComponent(resolved, component);
    const auto target = fileSystem_.readLink(candidate);
    if (target && !target->empty() && ++links <= kMaximumLinks) {
      if (target->front() == '/') resolved = "/";
      reader.replaceLast(*target);
    } else if (!target && target.error().isPosix(posix::kInvalidArgument)) {
      resolved = std::move(candidate);  // exists and is no link
    } else {
      return stringByAppendingPathComponent(resolved, reader.rest());
    }
  }
}

}  // namespace vantrell
