// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Log.h"
#include "host/FileSystem.h"
#include "treewalk/WalkedObject.h"

namespace vantrell {

/// Walks a folder tree depth-first, each folder before its contents, in the order in which the file system lists them.
/// Links are handed out and never followed.
///
/// At most 500 levels are open at a time, each with one descriptor, and relative paths of up to 1024 bytes are entered.
/// What lies beyond either is handed out but not entered, which is logged; so are, without a word, folders that can't
/// be opened.
///
///     path buffer   /base/folder/inner/name
///                        |      |     |
///                        |      |     the object at hand, written behind the folder being read
///                        |      each level's component, from its separator on
///                        the relative path
///
/// A level adds the length of its component modulo 256 to the relative path: a folder with a name of 255 bytes behind a
/// separator adds nothing, and what it contains is shown as if it lay one level higher. That is kept for the sake of
/// what is written on it. It touches texts and the length limit only: the walk itself goes by handles, enters the
/// folders that it met, whatever their paths come to lead to, and can't be led elsewhere.
///
/// One thread at a time, but for lastInaccessibleFolderPath. What it is given must outlive it.
class QELDirectoryEnumerator {
 public:
  static constexpr char kClassName[] = "QELDirectoryEnumerator";
  static constexpr std::size_t kMaximumLevels = 500;
  static constexpr std::size_t kMaximumRelativePathLength = 1024;

  /// Null, with an error in the log, when the path is empty or leads to no folder (links are followed). A folder that
  /// can't be read is walked as an empty one. Without staying on its file system the volumes by number, "/.vol", are
  /// not entered.
  static std::unique_ptr<QELDirectoryEnumerator> enumeratorAtPath(host::FileSystem& fileSystem, const Log& log,
                                                                  const std::string& path,
                                                                  bool stayOnFileSystem = false);

  /// A walk through an open folder; `path` is shown for it. `onlyFileSystem` is a device number.
  QELDirectoryEnumerator(std::shared_ptr<host::DirectoryHandle> folder, const Log& log, std::string_view path,
                         std::optional<std::uint64_t> onlyFileSystem);
  QELDirectoryEnumerator(const QELDirectoryEnumerator&) = delete;
  QELDirectoryEnumerator& operator=(const QELDirectoryEnumerator&) = delete;

  /// The next object, or null at the end and ever after. Valid until the following call.
  const WalkedObject* next();

  /// The relative path of the next object.
  std::optional<std::string> nextObject();
  /// Of all that are left.
  std::vector<std::string> allObjects();

  /// Leaves the folder that was entered last: right after a folder was handed out and entered that one's contents are
  /// skipped, at any other time the rest of the folder being read.
  void skipDescendents() { popDirectory(); }

  bool shouldStayOnFileSystem() const noexcept { return onlyFileSystem_.has_value(); }
  /// The folder being read, or null.
  host::DirectoryHandle* currentDirectoryStream() const noexcept {
    return levels_.empty() ? nullptr : levels_.back().directoryStream.get();
  }
  /// Number of open levels, the base included.
  std::size_t levels() const noexcept { return levels_.size(); }

  /// Enters an entry of the folder being read, within the limits.
  EntryRefusal pushDirectoryEntry(const host::DirectoryEntry* entry);
  /// Leaves the folder being read; the one that is read from now on, or null.
  host::DirectoryHandle* popDirectory();

  /// Base path, a separator where it does not end in one, and the relative path of the folder being read.
  std::string copyCurrentAbsoluteFileSystemRepresentation() const;
  /// The same of an entry of that folder.
  std::string copyCurrentAbsoluteFileSystemRepresentation(const host::DirectoryEntry& forDirectoryEntry) const;
  /// Nothing for no entry.
  std::optional<std::string> currentRelativePath(const host::DirectoryEntry* forDirectoryEntry) const;

  /// The path of the last folder that could not be opened; empty when there was none. From any thread.
  std::string lastInaccessibleFolderPath() const;
  void setLastInaccessibleFolderPath(std::string path);

  /// Base path and separator: in front of a relative path it makes an absolute one.
  std::string_view basePrefix() const noexcept { return {path_.data(), relativePath_}; }

  /// From now on limits are noted in the objects only, for someone else to log.
  void leaveLoggingToCaller() noexcept { logsRefusals_ = false; }
  static void logRefusal(const Log& log, EntryRefusal refusal);

 private:
  struct Level {  // _QELDirDescriptor
    std::size_t pathComponent = 0;
    std::uint8_t componentLength = 0;
    bool isPathFaithful = true;  // of what lies in it
    std::shared_ptr<host::DirectoryHandle> directoryStream;
  };

  void handOut(const host::DirectoryEntry& entry);
  bool isFolder(host::FileType listedType) const;
  bool mayBeEntered() const;
  std::string_view writeName(std::string_view name);
  EntryRefusal refuse(EntryRefusal refusal) const;

  Log log_;
  std::vector<char> path_;          // the buffer: base, separator, relative path, one more name, a zero byte
  std::size_t relativePath_ = 0;    // where it begins
  std::size_t relativeLength_ = 0;  // of the folder being read
  std::vector<Level> levels_;
  std::optional<std::uint64_t> onlyFileSystem_;
  bool logsRefusals_ = true;
  WalkedObject object_;
  mutable std::mutex lastInaccessibleLock_;
  std::string lastInaccessibleFolderPath_;
};

}  // namespace vantrell
