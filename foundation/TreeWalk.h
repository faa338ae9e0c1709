// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "foundation/TreeWalkCursor.h"
#include "foundation/TreeWalkTeam.h"
#include "host/FileSystem.h"

namespace vantrell {

/// What a walk does with what it meets. Any error returned ends the walk.
class TreeVisitor {
 public:
  enum class Enter : std::uint8_t { Skip, Descend };
  enum class Leave : std::uint8_t { Done, ScanAgain };

  virtual ~TreeVisitor() = default;

  /// Every entry, a folder before its contents. Descend is tried on whatever it is asked for; see cannotDescend.
  virtual Result<Enter> enter(TreeEntry& entry) = 0;

  /// A folder, after its contents, for the `scan`th time (from 1). ScanAgain enumerates it anew.
  virtual Result<Leave> leave(TreeEntry& entry, unsigned scan);

  /// The entry could not be opened as a folder: it has gone or is none (any more), it may not be read, it is a mount
  /// point (POSIX error 18) or it lies too deep (63).
  virtual ErrorOrNil cannotDescend(TreeEntry& entry, const Error& error);

  /// The enumeration of the folder at `path` broke off. The walk goes on behind it when this returns nothing.
  virtual ErrorOrNil cannotRead(const std::string& path, const Error& error);
};

/// The walk of a TreeWalkCursor, with a visitor that is told what it meets.
class TreeWalk {
 public:
  static constexpr std::size_t kMaximumDepth = TreeWalkCursor::kMaximumDepth;
  static constexpr std::size_t kMaximumOpenFolders = TreeWalkCursor::kMaximumOpenFolders;

  /// `path` is that of `top`, for messages.
  TreeWalk(std::unique_ptr<host::DirectoryHandle> top, std::string path, host::MountPoints mountPoints,
           TreeVisitor& visitor, std::size_t maximumOpenFolders = kMaximumOpenFolders)
      : cursor_(std::move(top), std::move(path), mountPoints, maximumOpenFolders),
        mountPoints_(mountPoints),
        visitor_(visitor) {}

  /// Lets a second thread walk some of the subtrees. Its calls of the visitor, which must bear them, may come at the
  /// same time as this thread's; a folder's `leave` still comes after all calls for what it contains. What ends the
  /// walk is the failure that would have ended it on one thread, but some of what comes after it may have been visited.
  static ErrorOrNil runOnTwoThreads(std::unique_ptr<host::DirectoryHandle> top, std::string path,
                                    host::MountPoints mountPoints, TreeVisitor& visitor);

  /// Once. Nothing, or what ended the walk.
  ErrorOrNil run();

 private:
  /// What has come of the subfolders of a folder that is being walked.
  struct Subfolders {
    bool hasWalkedOne = false;
    std::shared_ptr<TreeWalkTeam::Group> handedOver;
  };

  ErrorOrNil visit();
  ErrorOrNil leave();
  ErrorOrNil cannotDescend();
  bool handOver(TreeEntry& entry);
  bool mayHandOver();

  TreeWalkCursor cursor_;
  host::MountPoints mountPoints_;
  TreeVisitor& visitor_;
  std::function<bool()> hasBeenEnded_;
  TreeWalkTeam* team_ = nullptr;
  std::vector<Subfolders> subfolders_;  // with a team only; one for each folder on the way
};

}  // namespace vantrell
