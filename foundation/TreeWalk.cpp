// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/TreeWalk.h"

#include <utility>

#include "foundation/PosixCodes.h"

namespace vantrell {

using host::DirectoryHandle;
using host::FileType;
using Event = TreeWalkCursor::Event;

Result<TreeVisitor::Leave> TreeVisitor::leave(TreeEntry&, unsigned) {
  return Leave::Done;
}
ErrorOrNil TreeVisitor::cannotDescend(TreeEntry&, const Error&) {
  return std::nullopt;
}
ErrorOrNil TreeVisitor::cannotRead(const std::string&, const Error&) {
  return std::nullopt;
}

namespace {

// A folder with its contents, walked apart from what holds it.
struct Subtree {
  std::unique_ptr<DirectoryHandle> folder;
  std::string path;
  std::size_t nameOffset;
  host::FileStatus parentStatus;
};

// Takes the place of whatever the visitor would have returned once that no longer counts.
Error ended() {
  return Error::posix(posix::kCanceled);
}

bool isSameObject(const host::FileStatus& one, const host::FileStatus& other) {
  return one.device == other.device && one.inode == other.inode;
}

}  // namespace

ErrorOrNil TreeWalk::run() {
  if (team_) subfolders_.emplace_back();
  for (;;) {
    const auto event = cursor_.next();
    if (!event) return event.error();
    if (hasBeenEnded_ && hasBeenEnded_()) return ended();
    ErrorOrNil error;
    switch (*event) {
      case Event::Entry:
        error = visit();
        break;
      case Event::Left:
        error = leave();
        break;
      case Event::CannotDescend:
        error = cannotDescend();
        break;
      case Event::CannotRead:
        error = visitor_.cannotRead(cursor_.path(), cursor_.error());
        break;
      case Event::End:
        return std::nullopt;
    }
    if (error) return error;
  }
}

ErrorOrNil TreeWalk::visit() {
  auto& entry = cursor_.entry();
  const auto step = visitor_.enter(entry);
  if (!step) return step.error();
  if (*step == TreeVisitor::Enter::Skip || handOver(entry)) return std::nullopt;
  cursor_.descend();
  if (team_) {
    subfolders_.back().hasWalkedOne = true;
    subfolders_.emplace_back();
  }
  return std::nullopt;
}

ErrorOrNil TreeWalk::leave() {
  if (team_ && subfolders_.back().handedOver) {
    team_->finish(*subfolders_.back().handedOver);
    if (team_->hasFailed()) return ended();
  }
  const auto step = visitor_.leave(cursor_.entry(), cursor_.scan());
  if (!step) return step.error();
  if (*step == TreeVisitor::Leave::ScanAgain)
    cursor_.scanAgain();
  else if (team_)
    subfolders_.pop_back();
  return std::nullopt;
}

ErrorOrNil TreeWalk::cannotDescend() {
  const auto& error = cursor_.error();
  const bool shortOfHandles = error.isPosix(posix::kTooManyOpenFiles) || error.isPosix(posix::kFileTableFull);
  if (team_ && shortOfHandles && team_->finishAny()) {
    cursor_.descend();
    return std::nullopt;
  }
  if (team_) subfolders_.pop_back();
  return visitor_.cannotDescend(cursor_.entry(), cursor_.error());
}

// Not a folder's first subfolder: it may be the only one, and this thread left without work.
bool TreeWalk::mayHandOver() {
  return team_ && subfolders_.back().hasWalkedOne && cursor_.depth() < kMaximumDepth && team_->hasRoom();
}

bool TreeWalk::handOver(TreeEntry& entry) {
  if (!mayHandOver()) return false;
  const auto parentStatus = entry.folder().status();
  auto folder = entry.folder().openDirectory(entry.name(), mountPoints_);
  if (!parentStatus || !folder) return false;  // descending will tell why
  auto& group = subfolders_.back().handedOver;
  if (!group) group = std::make_shared<TreeWalkTeam::Group>();
  Subtree subtree{std::move(*folder), entry.path(), static_cast<std::size_t>(entry.name() - entry.path().c_str()),
                  *parentStatus};
  auto task = [subtree = std::move(subtree), mountPoints = mountPoints_,
               &visitor = visitor_](const TreeWalkTeam::ShouldEnd& shouldEnd) mutable -> ErrorOrNil {
    for (unsigned scan = 1;; ++scan) {
      // Each task has its own handle on the folder that holds its subtree. Moved elsewhere it is no longer part of it.
      auto parent = subtree.folder->openParent();
      if (!parent) return parent.error();
      const auto status = (*parent)->status();
      if (!status) return status.error();
      if (!isSameObject(*status, subtree.parentStatus)) return std::nullopt;
      TreeWalk walk(std::move(subtree.folder), subtree.path, mountPoints, visitor);
      walk.hasBeenEnded_ = shouldEnd;
      if (auto error = walk.run()) return error;
      TreeEntry left(**parent, subtree.path, subtree.nameOffset, FileType::Directory);
      const auto step = visitor.leave(left, scan);
      if (!step) return step.error();
      if (*step == TreeVisitor::Leave::Done) return std::nullopt;
      auto again = (*parent)->openDirectory(left.name(), mountPoints);
      if (!again) return visitor.cannotDescend(left, again.error());
      subtree.folder = std::move(*again);
    }
  };
  team_->handOver(group, std::move(task));
  return true;
}

ErrorOrNil TreeWalk::runOnTwoThreads(std::unique_ptr<DirectoryHandle> top, std::string path,
                                     host::MountPoints mountPoints, TreeVisitor& visitor) {
  TreeWalkTeam team;
  TreeWalk walk(std::move(top), std::move(path), mountPoints, visitor);
  walk.team_ = &team;
  walk.hasBeenEnded_ = [&team] { return team.hasFailed(); };
  const auto error = walk.run();
  return team.finishAll(error);
}

}  // namespace vantrell
