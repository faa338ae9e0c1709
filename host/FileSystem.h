// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Date.h"
#include "foundation/Error.h"
#include "foundation/Result.h"

namespace vantrell::host {

/// Object flags in BSD's numbering (sys/stat.h). A host maps what its kernel has; what it has not never appears.
namespace file_flags {
inline constexpr std::uint32_t kUserNoDump = 0x1;            // UF_NODUMP
inline constexpr std::uint32_t kUserImmutable = 0x2;         // UF_IMMUTABLE
inline constexpr std::uint32_t kUserAppend = 0x4;            // UF_APPEND
inline constexpr std::uint32_t kDataVault = 0x80;            // UF_DATAVAULT
inline constexpr std::uint32_t kSystemImmutable = 0x20000;   // SF_IMMUTABLE
inline constexpr std::uint32_t kSystemAppend = 0x40000;      // SF_APPEND
inline constexpr std::uint32_t kSystemRestricted = 0x80000;  // SF_RESTRICTED
inline constexpr std::uint32_t kSystemNoUnlink = 0x100000;   // SF_NOUNLINK
}  // namespace file_flags

enum class FileType : std::uint8_t {
  Unknown,
  Regular,
  Directory,
  SymbolicLink,
  Fifo,
  Socket,
  CharacterDevice,
  BlockDevice,
  Whiteout,
};

struct FileStatus {
  FileType type = FileType::Unknown;
  std::uint16_t permissions = 0;  // the low twelve mode bits
  std::uint32_t flags = 0;        // file_flags
  std::uint32_t owner = 0;
  std::uint32_t group = 0;
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::uint64_t links = 0;
  std::uint64_t size = 0;  // bytes
  Date accessed;
  Date modified;

  bool isDirectory() const noexcept { return type == FileType::Directory; }
  bool isSymbolicLink() const noexcept { return type == FileType::SymbolicLink; }
};

enum class FollowLinks : bool { No, Yes };

/// Whether the step into a folder may cross onto another mount (a bind mount of the same file system included).
enum class MountPoints : bool { Refuse, Enter };

/// One name in a folder. `name` is valid until the next call of `next` on the same handle and is followed by a zero
/// byte. `type` is Unknown where the file system does not tell.
struct DirectoryEntry {
  std::string_view name;
  FileType type = FileType::Unknown;
};

/// An open folder. Every operation below takes one name (no slash, not empty, not "." or "..": POSIX error 22) and acts
/// on that entry of this very folder, wherever the folder may have been moved meanwhile, and through a link only where
/// `follow` says so. One thread at a time.
class DirectoryHandle {
 public:
  virtual ~DirectoryHandle() = default;

  virtual Result<FileStatus> status() const = 0;
  virtual Result<FileStatus> statusOf(const char* name, FollowLinks follow) const = 0;

  /// POSIX error 20 or 62 when the entry is not a folder itself (a link to one included), 18 when it is a mount point
  /// that was to be refused.
  virtual Result<std::unique_ptr<DirectoryHandle>> openDirectory(const char* name, MountPoints mountPoints) const = 0;

  /// The folder that holds this one at this moment, which need not be the one it was opened from: compare `status`.
  virtual Result<std::unique_ptr<DirectoryHandle>> openParent() const = 0;

  /// The next entry, "." and ".." left out; nothing at the end.
  virtual Result<std::optional<DirectoryEntry>> next() = 0;
  virtual void rewind() = 0;

  /// Where the enumeration stands, for a later handle on the same folder. Entries that come or go in between may be
  /// met twice or not at all, as with any enumeration.
  virtual std::uint64_t position() const noexcept = 0;
  virtual void setPosition(std::uint64_t position) = 0;

  /// Sets the flags of the folder itself, or of an entry, to exactly `flags`; flags that are already set so cost no
  /// write. POSIX error 45 where the file system has no such flags, or for an object of a type that can have none.
  virtual ErrorOrNil setFlags(std::uint32_t flags) = 0;
  virtual ErrorOrNil setFlagsOf(const char* name, std::uint32_t flags, FollowLinks follow) = 0;

  /// Removes an entry that is not a folder (POSIX error 1 or 21 for a folder), or a folder that is empty (20 for
  /// anything else, 66 when it is not empty).
  virtual ErrorOrNil removeFile(const char* name) = 0;
  virtual ErrorOrNil removeDirectory(const char* name) = 0;
};

/// A file's whole content, read or mapped.
class FileContents {
 public:
  virtual ~FileContents() = default;
  virtual DataView bytes() const noexcept = 0;
};

/// Objects by path. Paths are byte strings without zero bytes (else POSIX error 22); failures are POSIX errors without
/// user info. Safe from any thread.
class FileSystem {
 public:
  virtual ~FileSystem() = default;

  virtual Result<FileStatus> status(const std::string& path, FollowLinks follow) = 0;

  /// See DirectoryHandle::setFlags. With FollowLinks::No a symbolic link is POSIX error 45 where links bear no flags.
  virtual ErrorOrNil setFlags(const std::string& path, std::uint32_t flags, FollowLinks follow) = 0;

  /// POSIX error 20 or 62 for anything but a folder; `follow` is about the last component.
  virtual Result<std::unique_ptr<DirectoryHandle>> openDirectory(const std::string& path, FollowLinks follow) = 0;

  /// See DirectoryHandle; a symbolic link is removed itself.
  virtual ErrorOrNil removeFile(const std::string& path) = 0;
  virtual ErrorOrNil removeDirectory(const std::string& path) = 0;

  /// Target of a symbolic link, unresolved. POSIX error 22 for anything else.
  virtual Result<std::string> readLink(const std::string& path) = 0;

  /// The whole content of a regular file (POSIX error 22 for anything else, without blocking on it), links followed;
  /// POSIX error 27 when it is longer than `maximumSize` bytes. Mapped where nobody but its owner, this process's user
  /// or root, may write to it (so that it can't shrink under the reader), else read into memory.
  virtual Result<std::unique_ptr<FileContents>> loadFile(const std::string& path, std::uint64_t maximumSize) = 0;
};

}  // namespace vantrell::host
