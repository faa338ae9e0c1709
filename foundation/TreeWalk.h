// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell {

/// One object met by a walk, as an entry of the folder that holds it. Valid during the call that it is passed to.
class TreeEntry {
 public:
  TreeEntry(host::DirectoryHandle& folder, const std::string& path, std::size_t nameOffset, host::FileType type)
      : folder_(folder), path_(path), nameOffset_(nameOffset), type_(type) {}

  host::DirectoryHandle& folder() const noexcept { return folder_; }
  const char* name() const noexcept { return path_.c_str() + nameOffset_; }
  /// The path of the walk's top with the names on the way; for messages, never for system calls.
  const std::string& path() const noexcept { return path_; }
  /// What the folder says of it; Unknown where it says nothing.
  host::FileType type() const noexcept { return type_; }

 private:
  host::DirectoryHandle& folder_;
  const std::string& path_;
  std::size_t nameOffset_;
  host::FileType type_;
};

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

/// A depth-first walk through everything below one folder, in the order of the file system, on directory handles: a
/// folder that is swapped for a link meanwhile leads nowhere else.
///
/// At most `maximumOpenFolders` handles are open at a time and memory grows with the depth only (its bound is
/// kMaximumDepth). Beyond that many levels the outermost handles are closed, and reopened through ".." of the folder
/// below on the way back, where device and inode must be the same as before: else the walk ends with POSIX error 2.
///
/// A walk belongs to one thread; walks through different folders may run at the same time.
class TreeWalk {
 public:
  static constexpr std::size_t kMaximumDepth = 262'144;
  static constexpr std::size_t kMaximumOpenFolders = 64;

  /// `path` is that of `top`, for messages.
  TreeWalk(std::unique_ptr<host::DirectoryHandle> top, std::string path, host::MountPoints mountPoints,
           TreeVisitor& visitor, std::size_t maximumOpenFolders = kMaximumOpenFolders);

  /// Once. Nothing, or what ended the walk.
  ErrorOrNil run();

 private:
  struct Level {
    std::unique_ptr<host::DirectoryHandle> folder;  // nullptr while closed
    std::size_t nameOffset = 0;                     // of the folder's own name in path_
    std::size_t pathLength = 0;                     // of the folder's path in path_
    unsigned scan = 1;
    std::uint64_t position = 0;  // these three while closed
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
  };

  ErrorOrNil visit(const host::DirectoryEntry& entry);
  ErrorOrNil descend(TreeEntry& entry, std::size_t nameOffset);
  ErrorOrNil leaveFolder();
  ErrorOrNil closeOutermost();
  ErrorOrNil reopen(Level& level, const host::DirectoryHandle& child);
  Result<std::unique_ptr<host::DirectoryHandle>> openFolder(const TreeEntry& entry);

  std::vector<Level> levels_;
  std::size_t firstOpen_ = 0;  // levels before this one are closed, all others open
  std::string path_;           // of the entry at hand
  host::MountPoints mountPoints_;
  TreeVisitor& visitor_;
  std::size_t maximumOpenFolders_;
};

}  // namespace vantrell
