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

/// One object met by a walk, as an entry of the folder that holds it. Valid until the walk's next step.
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

/// A depth-first walk through everything below one folder, step by step, in the order of the file system, on directory
/// handles: a folder that is swapped for a link meanwhile leads nowhere else.
///
/// At most `maximumOpenFolders` handles are open at a time and memory grows with the depth only (its bound is
/// kMaximumDepth). Beyond that many levels the outermost handles are closed, and reopened through ".." of the folder
/// below on the way back, where device and inode must be the same as before: else the walk ends with POSIX error 2.
///
/// One thread at a time; walks through different folders may run at the same time.
class TreeWalkCursor {
 public:
  static constexpr std::size_t kMaximumDepth = 262'144;
  static constexpr std::size_t kMaximumOpenFolders = 64;

  enum class Event : std::uint8_t {
    Entry,          // an object, a folder before its contents; `descend` enters it with the next step
    Left,           // a folder that was entered, after its contents, for the `scan`th time (from 1)
    CannotDescend,  // an entry could not be opened as a folder, see `error`
    CannotRead,     // the enumeration of the folder at `path` broke off, see `error`; the walk goes on behind it
    End,
  };

  /// `path` is that of `top`, for messages.
  TreeWalkCursor(std::unique_ptr<host::DirectoryHandle> top, std::string path, host::MountPoints mountPoints,
                 std::size_t maximumOpenFolders = kMaximumOpenFolders);
  TreeWalkCursor(const TreeWalkCursor&) = delete;
  TreeWalkCursor& operator=(const TreeWalkCursor&) = delete;

  /// The next event, or what ended the walk.
  Result<Event> next();

  /// After Entry, Left and CannotDescend.
  TreeEntry& entry() noexcept { return *entry_; }
  /// After CannotDescend (the entry has gone or is no folder, may not be read, is a mount point that was to be refused:
  /// 18, or lies too deep: 63) and CannotRead.
  const Error& error() const noexcept { return *error_; }
  const std::string& path() const noexcept { return path_; }
  unsigned scan() const noexcept { return left_ ? left_->scan : 0; }
  /// Of folders entered and not yet left, the top included.
  std::size_t depth() const noexcept { return levels_.size(); }

  /// After Entry, and after CannotDescend to try again: enters the entry by its name, or what the caller has opened in
  /// its place.
  void descend() noexcept { descending_ = true; }
  void descend(std::unique_ptr<host::DirectoryHandle> folder) noexcept {
    descending_ = true;
    opened_ = std::move(folder);
  }
  /// After Entry: takes `descend` back.
  void skip() noexcept {
    descending_ = false;
    opened_.reset();
  }
  /// After Left: enumerates the folder anew.
  void scanAgain() noexcept { scanningAgain_ = true; }

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

  Result<Event> carryOutRequest();
  Result<Event> enterFolder();
  Result<Event> leaveFolder();
  Event meet(const host::DirectoryEntry& found);
  Event cannot(Event event, Error error);
  ErrorOrNil closeOutermost();
  ErrorOrNil reopen(Level& level, const host::DirectoryHandle& child);
  Result<std::unique_ptr<host::DirectoryHandle>> openFolder();

  std::vector<Level> levels_;
  std::size_t firstOpen_ = 0;  // levels before this one are closed, all others open
  std::string path_;           // of the entry at hand
  host::MountPoints mountPoints_;
  std::size_t maximumOpenFolders_;

  std::optional<TreeEntry> entry_;
  ErrorOrNil error_;
  std::optional<Level> left_;  // after Left
  std::size_t nameOffset_ = 0;
  bool descending_ = false;
  bool scanningAgain_ = false;
  bool leaving_ = false;  // the innermost folder could not be read to its end
  std::unique_ptr<host::DirectoryHandle> opened_;
};

}  // namespace vantrell
