// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/TreeWalkCursor.h"

#include <algorithm>
#include <utility>

#include "foundation/PosixCodes.h"

namespace vantrell {

using host::DirectoryHandle;
using host::FileType;

// Two at least, for a child is opened from its parent and the parent reopened from its child.
TreeWalkCursor::TreeWalkCursor(std::unique_ptr<DirectoryHandle> top, std::string path, host::MountPoints mountPoints,
                               std::size_t maximumOpenFolders)
    : path_(std::move(path)),
      mountPoints_(mountPoints),
      maximumOpenFolders_(std::max<std::size_t>(maximumOpenFolders, 2)) {
  Level level;
  level.folder = std::move(top);
  level.pathLength = path_.size();
  levels_.push_back(std::move(level));
}

Result<TreeWalkCursor::Event> TreeWalkCursor::next() {
  if (descending_ || scanningAgain_) {
    const auto event = carryOutRequest();
    if (!event || *event != Event::Entry) return event;
  }
  left_.reset();
  if (levels_.empty()) return Event::End;
  if (!std::exchange(leaving_, false)) {
    auto& level = levels_.back();
    path_.resize(level.pathLength);
    const auto found = level.folder->next();
    if (found && *found) return meet(**found);
    if (!found) {
      leaving_ = true;
      return cannot(Event::CannotRead, found.error());
    }
  }
  return leaveFolder();
}

// Entry stands for: nothing to tell, go on.
Result<TreeWalkCursor::Event> TreeWalkCursor::carryOutRequest() {
  if (std::exchange(descending_, false)) return enterFolder();
  scanningAgain_ = false;
  left_->folder->rewind();
  ++left_->scan;
  levels_.push_back(std::move(*left_));
  return Event::Entry;
}

Result<TreeWalkCursor::Event> TreeWalkCursor::enterFolder() {
  auto given = std::move(opened_);
  if (levels_.size() >= kMaximumDepth) return cannot(Event::CannotDescend, Error::posix(posix::kNameTooLong));
  if (!given) {
    auto folder = openFolder();
    if (!folder) return cannot(Event::CannotDescend, folder.error());
    given = std::move(*folder);
  }
  Level level;
  level.folder = std::move(given);
  level.nameOffset = nameOffset_;
  level.pathLength = path_.size();
  levels_.push_back(std::move(level));
  if (levels_.size() - firstOpen_ > maximumOpenFolders_) {
    if (auto error = closeOutermost()) return failure(*error);
  }
  return Event::Entry;
}

Result<TreeWalkCursor::Event> TreeWalkCursor::leaveFolder() {
  left_ = std::move(levels_.back());
  levels_.pop_back();
  if (levels_.empty()) return Event::End;
  auto& parent = levels_.back();
  if (!parent.folder) {
    if (auto error = reopen(parent, *left_->folder)) return failure(*error);
  }
  path_.resize(left_->pathLength);
  entry_.emplace(*parent.folder, path_, left_->nameOffset, FileType::Directory);
  return Event::Left;
}

TreeWalkCursor::Event TreeWalkCursor::meet(const host::DirectoryEntry& found) {
  if (path_.empty() || path_.back() != '/') path_ += '/';
  nameOffset_ = path_.size();
  path_ += found.name;
  entry_.emplace(*levels_.back().folder, path_, nameOffset_, found.type);
  return Event::Entry;
}

TreeWalkCursor::Event TreeWalkCursor::cannot(Event event, Error error) {
  error_ = std::move(error);
  return event;
}

// The whole process may be short of descriptors; this walk can do with few.
Result<std::unique_ptr<DirectoryHandle>> TreeWalkCursor::openFolder() {
  const auto open = [this] { return entry_->folder().openDirectory(entry_->name(), mountPoints_); };
  auto folder = open();
  if (folder) return folder;
  const auto& error = folder.error();
  if (!error.isPosix(posix::kTooManyOpenFiles) && !error.isPosix(posix::kFileTableFull)) return folder;
  while (levels_.size() - firstOpen_ > 1) {
    if (auto closing = closeOutermost()) return failure(*closing);
  }
  return open();
}

ErrorOrNil TreeWalkCursor::closeOutermost() {
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

ErrorOrNil TreeWalkCursor::reopen(Level& level, const DirectoryHandle& child) {
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

}  // namespace vantrell
