// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/AccessControlList.h"
#include "host/DirectoryHandle.h"
#include "host/FileStatus.h"
#include "host/FileStreams.h"
#include "host/ObjectHandle.h"

namespace vantrell::host {

/// An object by the folder that holds it and its name there.
struct Location {
  std::unique_ptr<DirectoryHandle> folder;
  std::string name;
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

  /// The folder that holds the last component of `path`, and that component. Links before it are followed, it is not;
  /// slashes at the end don't count. The folder is held as a place: its entries can be named but not enumerated (POSIX
  /// error 9), for which it need not be readable. POSIX error 22 when the path has no last component of its own: it is
  /// empty or ends in "/", "." or "..".
  virtual Result<Location> locate(const std::string& path) = 0;

  virtual Result<std::unique_ptr<ObjectHandle>> openObject(const std::string& path, FollowLinks follow) = 0;

  /// The folder that some folders at the root really lie in although nobody writes it in their paths: "/private" on
  /// macOS. Empty elsewhere.
  virtual std::string_view unwrittenFolder() const noexcept { return {}; }

  /// The extended attribute that holds an object's Finder information.
  virtual const char* finderInfoAttributeName() const noexcept = 0;

  /// POSIX error 22 for bytes that are no list in full.
  virtual Result<std::unique_ptr<AccessControlList>> accessControlListFromExternalForm(DataView bytes) = 0;

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
