// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell {

/// A fresh folder inside another one that nobody but this process's user may look into: what is made and furnished here
/// can't be exchanged by whoever owns the folder outside, before it is moved there by renaming. Gone with all that it
/// still holds at the end of the scope.
class FileManagerPrivateFolder {
 public:
  /// `outer` must outlive it. POSIX errors.
  static Result<std::unique_ptr<FileManagerPrivateFolder>> makeIn(host::DirectoryHandle& outer);
  FileManagerPrivateFolder(const FileManagerPrivateFolder&) = delete;
  FileManagerPrivateFolder& operator=(const FileManagerPrivateFolder&) = delete;
  ~FileManagerPrivateFolder();

  host::DirectoryHandle& handle() noexcept { return *folder_; }

 private:
  FileManagerPrivateFolder(host::DirectoryHandle& outer, std::string name) : outer_(outer), name_(std::move(name)) {}
  ErrorOrNil open();

  host::DirectoryHandle& outer_;
  std::string name_;
  std::unique_ptr<host::DirectoryHandle> folder_;
};

}  // namespace vantrell
