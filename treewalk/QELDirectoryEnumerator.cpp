// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/QELDirectoryEnumerator.h"

#include <algorithm>
#include <utility>

#include "foundation/FileManager.h"
#include "foundation/PosixCodes.h"

namespace vantrell {

using host::FileType;
using host::FollowLinks;

namespace {

constexpr std::string_view kVolumesByNumber = "/.vol";
constexpr std::size_t kRoomForName = 256;  // a name longer than that makes the buffer grow

// It has gone, or is no folder any more: not one that exists and can't be read.
bool meansNoFolder(const Error& error) {
  return error.isPosix(posix::kNoEntry) || error.isPosix(posix::kNotDirectory) || error.isPosix(posix::kTooManyLinks);
}

}  // namespace

std::unique_ptr<QELDirectoryEnumerator> QELDirectoryEnumerator::enumeratorAtPath(host::FileSystem& fileSystem,
                                                                                 const Log& log,
                                                                                 const std::string& path,
                                                                                 bool stayOnFileSystem) {
  bool isDirectory = false;
  if (path.empty() || !FileManager(fileSystem).fileExistsAtPath(path, &isDirectory) || !isDirectory) {
    log.error("{}: attempt to initialize with invalid path '{}'", kClassName, path);
    return nullptr;
  }
  std::optional<std::uint64_t> onlyFileSystem;
  if (stayOnFileSystem) {
    if (const auto status = fileSystem.status(path, FollowLinks::No)) onlyFileSystem = status->device;
  }
  auto folder = fileSystem.openDirectory(path, FollowLinks::Yes);
  return std::make_unique<QELDirectoryEnumerator>(folder ? std::move(*folder) : nullptr, log, path, onlyFileSystem);
}

QELDirectoryEnumerator::QELDirectoryEnumerator(std::shared_ptr<host::DirectoryHandle> folder, const Log& log,
                                               std::string_view path, std::optional<std::uint64_t> onlyFileSystem)
    : log_(log), onlyFileSystem_(onlyFileSystem) {
  path_.reserve(path.size() + 1 + kMaximumRelativePathLength + 1 + kRoomForName);
  path_.assign(path.begin(), path.end());
  if (path.size() != 1) path_.push_back('/');
  relativePath_ = path_.size();
  path_.resize(path_.capacity());
  levels_.push_back({relativePath_, 0, true, std::move(folder)});
}

const WalkedObject* QELDirectoryEnumerator::next() {
  for (auto* stream = currentDirectoryStream(); stream; stream = popDirectory()) {
    const auto entry = stream->next();
    if (!entry || !*entry) continue;  // a failure ends the folder as its end does
    handOut(**entry);
    return &object_;
  }
  return nullptr;
}

void QELDirectoryEnumerator::handOut(const host::DirectoryEntry& entry) {
  const auto& level = levels_.back();
  if (object_.folder_ != level.directoryStream) object_.folder_ = level.directoryStream;
  object_.name_ = writeName(entry.name);
  object_.relativePath_ = {path_.data() + relativePath_,
                           static_cast<std::size_t>(object_.name_.end() - (path_.data() + relativePath_))};
  object_.listedType_ = entry.type;
  object_.status_.reset();
  object_.isPathFaithful_ = level.isPathFaithful;
  const auto levelsBefore = levels_.size();
  object_.refusal_ = isFolder(entry.type) && mayBeEntered() ? pushDirectoryEntry(&entry) : EntryRefusal::None;
  object_.isEntered_ = levels_.size() > levelsBefore;
}

// The zero byte behind the name is for the system calls.
std::string_view QELDirectoryEnumerator::writeName(std::string_view name) {
  auto end = relativePath_ + relativeLength_;
  if (path_.size() < end + 1 + name.size() + 1) path_.resize(end + 1 + name.size() + 1);
  if (relativeLength_ != 0) path_[end++] = '/';
  std::ranges::copy(name, path_.data() + end);
  path_[end + name.size()] = 0;
  return {path_.data() + end, name.size()};
}

bool QELDirectoryEnumerator::isFolder(FileType listedType) const {
  if (listedType != FileType::Unknown) return listedType == FileType::Directory;
  return object_.status() && object_.status()->isDirectory();
}

bool QELDirectoryEnumerator::mayBeEntered() const {
  if (onlyFileSystem_) return object_.status() && object_.status()->device == *onlyFileSystem_;
  return !std::string_view(path_.data(), path_.size()).starts_with(kVolumesByNumber);
}

EntryRefusal QELDirectoryEnumerator::pushDirectoryEntry(const host::DirectoryEntry* entry) {
  if (!entry || entry->name.empty() || !currentDirectoryStream()) return EntryRefusal::None;
  if (relativeLength_ + entry->name.size() + 1 >= kMaximumRelativePathLength + 1)
    return refuse(EntryRefusal::PathTooLong);
  if (levels_.size() >= kMaximumLevels) return refuse(EntryRefusal::TooDeep);
  const auto name = writeName(entry->name);
  const auto component = relativePath_ + relativeLength_;
  const auto length = static_cast<std::size_t>(name.end() - (path_.data() + component));
  const auto storedLength = static_cast<std::uint8_t>(length);  // modulo 256: see above
  auto folder = currentDirectoryStream()->openDirectory(name.data(), host::MountPoints::Enter);
  if (!folder && meansNoFolder(folder.error())) return EntryRefusal::None;
  const bool isPathFaithful = levels_.back().isPathFaithful && storedLength == length;
  levels_.push_back({component, storedLength, isPathFaithful, folder ? std::move(*folder) : nullptr});
  relativeLength_ += storedLength;
  if (folder) return EntryRefusal::None;
  setLastInaccessibleFolderPath(copyCurrentAbsoluteFileSystemRepresentation());
  popDirectory();
  return EntryRefusal::Inaccessible;
}

host::DirectoryHandle* QELDirectoryEnumerator::popDirectory() {
  if (levels_.empty()) return nullptr;
  relativeLength_ -= levels_.back().componentLength;
  levels_.pop_back();
  return currentDirectoryStream();
}

EntryRefusal QELDirectoryEnumerator::refuse(EntryRefusal refusal) const {
  if (logsRefusals_) logRefusal(log_, refusal);
  return refusal;
}

void QELDirectoryEnumerator::logRefusal(const Log& log, EntryRefusal refusal) {
  if (refusal == EntryRefusal::PathTooLong) log.notice("{}: maximum path length reached. Skipping...", kClassName);
  if (refusal == EntryRefusal::TooDeep)
    log.notice("{}: maximum number of nested directories reached. Skipping...", kClassName);
}

std::optional<std::string> QELDirectoryEnumerator::nextObject() {
  const auto* object = next();
  return object ? std::optional<std::string>(object->relativePath()) : std::nullopt;
}

std::vector<std::string> QELDirectoryEnumerator::allObjects() {
  std::vector<std::string> paths;
  while (const auto* object = next()) paths.emplace_back(object->relativePath());
  return paths;
}

std::string QELDirectoryEnumerator::copyCurrentAbsoluteFileSystemRepresentation() const {
  return {path_.data(), relativePath_ + relativeLength_};
}

std::string QELDirectoryEnumerator::copyCurrentAbsoluteFileSystemRepresentation(
    const host::DirectoryEntry& forDirectoryEntry) const {
  auto path = copyCurrentAbsoluteFileSystemRepresentation();
  if (relativeLength_ != 0) path += '/';
  return path += forDirectoryEntry.name;
}

std::optional<std::string> QELDirectoryEnumerator::currentRelativePath(
    const host::DirectoryEntry* forDirectoryEntry) const {
  if (!forDirectoryEntry) return std::nullopt;
  return copyCurrentAbsoluteFileSystemRepresentation(*forDirectoryEntry).substr(relativePath_);
}

std::string QELDirectoryEnumerator::lastInaccessibleFolderPath() const {
  const std::lock_guard lock(lastInaccessibleLock_);
  return lastInaccessibleFolderPath_;
}

void QELDirectoryEnumerator::setLastInaccessibleFolderPath(std::string path) {
  const std::lock_guard lock(lastInaccessibleLock_);
  lastInaccessibleFolderPath_ = std::move(path);
}

}  // namespace vantrell
