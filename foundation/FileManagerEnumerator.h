// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "foundation/TreeWalkCursor.h"
#include "host/FileSystem.h"

namespace vantrell {

/// The objects below a folder, each folder before its contents, in the order of the file system. Links are met and
/// never entered, mount points are entered, folders that can't be read count as empty. One thread at a time.
class FileManagerEnumerator {
 public:
  /// Null for `top` gives one without objects.
  FileManagerEnumerator(std::unique_ptr<host::DirectoryHandle> top, const std::string& path);

  /// The path of the next object relative to the top folder; nothing at the end.
  std::optional<std::string> nextObject();

  /// Keeps the folder that nextObject returned last from being entered; does nothing after anything else.
  void skipDescendants() noexcept;

  /// The object that nextObject returned last, until it is called again.
  TreeEntry& entry() noexcept { return cursor_->entry(); }

 private:
  std::unique_ptr<TreeWalkCursor> cursor_;
  std::size_t relativeOffset_ = 0;
};

}  // namespace vantrell
