// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell {

class TreeEntry;

/// Everything about an object but its name and content. What a file system can't store (POSIX error 45) stays behind.
struct ObjectMetadata {
  host::FileStatus status;  // with the object's own permissions, whatever its access control list grants
  std::vector<std::pair<std::string, Data>> extendedAttributes;
  std::unique_ptr<host::AccessControlList> accessControlList;

  static Result<ObjectMetadata> of(const host::ObjectHandle& object);
  ErrorOrNil imposeOn(host::ObjectHandle& object) const;
};

/// Copies one object with all that it contains and all metadata: owner, group, permissions, times, flags, extended
/// attributes, access control list. Links are copied as links, named pipes, devices and whiteouts as such; names for
/// one file become files of their own; sockets are POSIX error 45.
///
/// What others do to the source meanwhile can't mix one object's content with another's metadata. What an immutable or
/// append-only flag keeps from being moved (1), or a mount point inside (16), ends the copy: they could not be removed
/// afterwards.
class FileManagerCopy {
 public:
  /// A failure, and what it happened to.
  struct Failure {
    Error error;
    std::string path;
  };

  /// `path` is the source's, for messages. The copy is made in `destination`, under a name that is free and out of
  /// everyone else's reach; what was made before a failure stays.
  FileManagerCopy(host::DirectoryHandle& source, std::string path, host::DirectoryHandle& destination)
      : source_(source), path_(std::move(path)), destination_(destination) {}

  std::optional<Failure> copy(const char* sourceName, const char* name);

 private:
  ErrorOrNil copyObject(host::DirectoryHandle& from, const char* name, const ObjectMetadata& metadata,
                        const char* newName);
  ErrorOrNil copyFile(host::DirectoryHandle& from, const char* name, const ObjectMetadata& metadata,
                      const char* newName);
  std::optional<Failure> copyContents(const host::ObjectHandle& object);
  Result<std::unique_ptr<host::DirectoryHandle>> copyEntry(TreeEntry& entry);
  ErrorOrNil enterNewFolder(const char* name, ObjectMetadata metadata);
  ErrorOrNil leaveNewFolder();

  struct Level {
    std::string name;
    ObjectMetadata metadata;
  };

  host::DirectoryHandle& source_;
  std::string path_;
  host::DirectoryHandle& destination_;
  std::unique_ptr<host::DirectoryHandle> inner_;  // the new folder being filled, if not `destination_`
  std::vector<Level> levels_;                     // from the new top folder down to it

  host::DirectoryHandle& here() { return inner_ ? *inner_ : destination_; }
};

}  // namespace vantrell
