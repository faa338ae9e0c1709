// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/AccessControlList.h"
#include "host/FileStatus.h"
#include "host/FileStreams.h"
#include "host/ObjectHandle.h"

namespace vantrell::host {

/// Whether the step into a folder may cross onto another mount (a bind mount of the same file system included).
enum class MountPoints : bool { Refuse, Enter };

/// One name in a folder. `name` is valid until the next call of `next` on the same handle and is followed by a zero
/// byte. `type` is Unknown where the file system does not tell.
struct DirectoryEntry {
  std::string_view name;
  FileType type = FileType::Unknown;
};

/// See DirectoryHandle::examineRightsOf.
struct ExaminedRights {
  std::uint16_t ownPermissions = 0;
  bool hasList = false;
};

/// An open folder. Every operation below takes one name (no slash, not empty, not "." or "..": POSIX error 22), acts on
/// that entry of this very folder, wherever that may be by then, and through a link only where `follow` says so. One
/// thread at a time, but that others may call what takes a name while one of them enumerates.
class DirectoryHandle {
 public:
  virtual ~DirectoryHandle() = default;

  virtual Result<FileStatus> status() const = 0;
  virtual Result<FileStatus> statusOf(const char* name, FollowLinks follow) const = 0;

  virtual Result<std::unique_ptr<ObjectHandle>> openObject(const char* name, FollowLinks follow) const = 0;

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

  /// Target of a symbolic link, unresolved. POSIX error 22 for anything else.
  virtual Result<std::string> readLinkOf(const char* name) const = 0;
  /// POSIX error 22 for anything but a regular file, without blocking on it; links are not followed (62).
  virtual Result<std::unique_ptr<FileReader>> openFile(const char* name) const = 0;

  // Creation. POSIX error 17 when the name is taken, be it by a link that leads nowhere; `permissions` are the
  // object's in the end, whatever the file-creation mask, as far as the file system keeps any. What a new object
  // inherits from this folder may be held back by them until inheritedAccessControlListOf's answer is set.
  virtual Result<std::unique_ptr<FileWriter>> createFile(const char* name, std::uint16_t permissions) = 0;
  virtual ErrorOrNil makeDirectory(const char* name, std::uint16_t permissions) = 0;
  virtual ErrorOrNil makeSymbolicLink(const char* name, const std::string& target) = 0;
  /// A named pipe, device or whiteout of `like`'s type, device number and permissions; POSIX error 45 for other types,
  /// and for a whiteout where the system makes none.
  virtual ErrorOrNil makeSpecialFile(const char* name, const FileStatus& like) = 0;
  /// A further name for the object `sourceName` in `sourceFolder`, a symbolic link itself included. POSIX error 18
  /// across file systems.
  virtual ErrorOrNil makeLink(const char* name, const DirectoryHandle& sourceFolder, const char* sourceName) = 0;

  /// Moves an entry; what bears the new name is never replaced (POSIX error 17). 18 across file systems, 22 for a
  /// folder that would come to lie in itself.
  virtual ErrorOrNil rename(const char* name, DirectoryHandle& destination, const char* newName) = 0;

  // The next five act on the entry itself, never through a link; see ObjectHandle.
  virtual ErrorOrNil setOwnerOf(const char* name, std::optional<std::uint32_t> owner,
                                std::optional<std::uint32_t> group) = 0;
  virtual ErrorOrNil setPermissionsOf(const char* name, std::uint16_t permissions) = 0;
  /// The twelve mode bits that owner, owning group and others really have: what setPermissionsOf would leave unchanged.
  /// `status` is the entry's own. They are its permissions but where the platform shows in the group's place what an
  /// extended access control list grants at most; only an object that may have one is asked for it.
  virtual Result<std::uint16_t> ownPermissionsOf(const char* name, const FileStatus& status) const = 0;
  virtual Result<std::unique_ptr<AccessControlList>> accessControlListOf(const char* name) const = 0;
  /// POSIX error 45 for a symbolic link. Costs no write when the list is what it should be.
  virtual ErrorOrNil setAccessControlListOf(const char* name, const AccessControlList* list) = 0;

  /// The list that a new entry, which nobody has changed since it was created here, owes to this folder; null when it
  /// owes it nothing. Where the platform lets the mode at creation bear on it, this folder's own word counts instead.
  /// Ask before permissions or list of the entry are set. Only setAccessControlListOf brings it into force in full.
  ///
  /// On Linux: the entry's named entries as this folder's default list has them in force, and a folder's default list.
  /// On macOS: the entry's own list, which is in force from the start.
  virtual Result<std::unique_ptr<AccessControlList>> inheritedAccessControlListOf(const char* name) const = 0;

  /// An entry whose status was just read, never through a link: openObject, but that a host may take the quicker way of
  /// opening what was a regular file or a folder. Somebody may have put another object in its place: read the status.
  virtual Result<std::unique_ptr<ObjectHandle>> openExaminedObject(const char* name, const FileStatus& status) const {
    static_cast<void>(status);
    return openObject(name, FollowLinks::No);
  }

  /// The rights to an entry whose status was just read, and whether it is certain to have exactly this list (null:
  /// none) already. An error where the list can't be read.
  virtual Result<ExaminedRights> examineRightsOf(const char* name, const FileStatus& status,
                                                 const AccessControlList* list) const {
    static_cast<void>(list);
    const auto permissions = ownPermissionsOf(name, status);
    if (!permissions) return std::unexpected(permissions.error());
    return ExaminedRights{*permissions, false};
  }

  /// Returns when the entries of this folder have reached the storage device.
  virtual ErrorOrNil synchronize() = 0;
};

}  // namespace vantrell::host
