// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/TreeWalk.h"

#include <algorithm>
#include <utility>

#include "foundation/PosixCodes.h"

namespace vantrell {

using host::DirectoryHandle;
using host::FileType;

Result<TreeVisitor::Leave> TreeVisitor::leave(TreeEntry&, unsigned) {
  return Leave::Done;
}
ErrorOrNil TreeVisitor::cannotDescend(TreeEntry&, const Error&) {
  return std::nullopt;
}
ErrorOrNil TreeVisitor::cannotRead(const std::string&, const Error&) {
  return std::nullopt;
}

// Two at least, for a child is opened from its parent and the parent reopened from its child.
TreeWalk::TreeWalk(std::unique_ptr<DirectoryHandle> top, std::string path, host::MountPoints mountPoints,
                   TreeVisitor& visitor, std::size_t maximumOpenFolders)
    : path_(std::move(path)),
      mountPoints_(mountPoints),
      visitor_(visitor),
      maximumOpenFolders_(std::max<std::size_t>(maximumOpenFolders, 2)) {
  Level level;
  level.folder = std::move(top);
  level.pathLength = path_.size();
  levels_.push_back(std::move(level));
}

ErrorOrNil TreeWalk::run() {
  while (!levels_.empty()) {
    path_.resize(levels_.back().pathLength);
    auto entry = levels_.back().folder->next();
    ErrorOrNil error;
    if (entry && *entry) {
      error = visit(**entry);
    } else {
      if (!entry) error = visitor_.cannotRead(path_, entry.error());
      if (!error) error = leaveFolder();
    }
    if (error) return error;
  }
  return std::nullopt;
}

ErrorOrNil TreeWalk::visit(const host::DirectoryEntry& found) {
  if (path_.empty() || path_.back() != '/') path_ += '/';
  const auto nameOffset = path_.size();
  path_ += found.name;
  TreeEntry entry(*levels_.back().folder, path_, nameOffset, found.type);
  const auto step = visitor_.enter(entry);
  if (!step) return step.error();
  return *step == TreeVisitor::Enter::Descend ? descend(entry, nameOffset) : std::nullopt;
}

ErrorOrNil TreeWalk::descend(TreeEntry& entry, std::size_t nameOffset) {
  if (levels_.size() >= kMaximumDepth) return visitor_.cannotDescend(entry, Error::posix(posix::kNameTooLong));
  auto folder = openFolder(entry);
  if (!folder) return visitor_.cannotDescend(entry, folder.error());
  Level level;
  level.folder = std::move(*folder);
  level.nameOffset = nameOffset;
  level.pathLength = path_.size();
  levels_.push_back(std::move(level));
  return levels_.size() - firstOpen_ > maximumOpenFolders_ ? closeOutermost() : std::nullopt;
}

// The whole process may be short of descriptors; this walk can do with few.
Result<std::unique_ptr<DirectoryHandle>> TreeWalk::openFolder(const TreeEntry& entry) {
  auto folder = entry.folder().openDirectory(entry.name(), mountPoints_);
  if (folder) return folder;
  const auto& error = folder.error();
  if (!error.isPosix(posix::kTooManyOpenFiles) && !error.isPosix(posix::kFileTableFull)) return folder;
  while (levels_.size() - firstOpen_ > 1) {
    if (auto closing = closeOutermost()) return failure(*closing);
  }
  return entry.folder().openDirectory(entry.name(), mountPoints_);
}

ErrorOrNil TreeWalk::closeOutermost() {
  auto& level = levels_[firstOpen_];
  const auto status = level.folder->status();
  if (!status) return status.error();
  level.position = level.folder->position();
  level.device = status->device;
  level.inode = status->inode;
  level.folder.reset();
  ++firstOpen_;
  return std::nullopt;
}

ErrorOrNil TreeWalk::reopen(Level& level, const DirectoryHandle& child) {
  auto folder = child.openParent();
  if (!folder) return folder.error();
  const auto status = (*folder)->status();
  if (!status) return status.error();
  // Someone has moved the child. What it lies in now is none of this walk's business.
  if (status->device != level.device || status->inode != level.inode) return Error::posix(posix::kNoEntry);
  (*folder)->setPosition(level.position);
  level.folder = std::move(*folder);
  --firstOpen_;
  return std::nullopt;
}

ErrorOrNil TreeWalk::leaveFolder() {
  Level left = std::move(levels_.back());
  levels_.pop_back();
  if (levels_.empty()) return std::nullopt;
  auto& parent = levels_.back();
  if (!parent.folder) {
    if (auto error = reopen(parent, *left.folder)) return error;
  }
  TreeEntry entry(*parent.folder, path_, left.nameOffset, FileType::Directory);
  const auto step = visitor_.leave(entry, left.scan);
  if (!step) return step.error();
  if (*step == TreeVisitor::Leave::Done) return std::nullopt;
  left.folder->rewind();
  ++left.scan;
  levels_.push_back(std::move(left));
  return std::nullopt;
}

}  // namespace vantrell
