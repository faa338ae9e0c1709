// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/FileManager.h"
#include "foundation/Value.h"
#include "host/ChildProcesses.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Replaces the content of an existing file, typically one of the operating system's, with a backup beside it.
///
///   target --renamed--> target.backup --removed, if asked, once the new content is on the storage device-->
///   target  <--created anew, written, given the old file's owner, group, permissions ...
///
/// There is no way back: a failure behind the renaming leaves the old content in the backup. At every moment one of the
/// two holds the old content whole, or the target the new one.
///
/// Stateless but for the process's file-creation mask, which is 0 meanwhile; safe from any thread. What it is given
/// must outlive it.
class SystemFileReplacement {
 public:
  SystemFileReplacement(FileManager& fileManager, host::FileSystem& fileSystem, host::ChildProcesses& childProcesses)
      : fileManager_(fileManager), fileSystem_(fileSystem), childProcesses_(childProcesses) {}

  /// Arguments: the path of the file, its new content as data, and whether to remove the backup.
  ErrorOrNil modifySystemfile(const Array& arguments);

  /// Links are followed to the file itself, which the backup then lies beside. POSIX errors: 22 for an empty path or
  /// no content (null), 2 where nothing is, 21 for a folder. Of the operation set's domain: 5 for a folder in the
  /// backup's place, 16 (with the file manager's error underneath) when the file can't be renamed. All others are the
  /// file manager's. A failed write is not told by itself, but keeps the backup.
  ErrorOrNil overwriteSystemFileAtPath(const std::string& path, const Data* withContent, bool removeBackup);

 private:
  ErrorOrNil makeRoomForBackup(host::DirectoryHandle& folder, const std::string& name, const std::string& path);
  ErrorOrNil replace(host::Location& target, const std::string& path, const Data& content, bool removeBackup);

  FileManager& fileManager_;
  host::FileSystem& fileSystem_;
  host::ChildProcesses& childProcesses_;
};

}  // namespace vantrell
