// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>

#include "foundation/Error.h"
#include "foundation/FileManager.h"
#include "foundation/Value.h"
#include "host/ChildProcesses.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Creates empty files and folders that belong to root. Stateless but for the process's file-creation mask, which is 0
/// meanwhile; safe from any thread. What it is given must outlive it.
class FileObjectCreation {
 public:
  FileObjectCreation(FileManager& fileManager, host::FileSystem& fileSystem, host::ChildProcesses& childProcesses)
      : fileManager_(fileManager), fileSystem_(fileSystem), childProcesses_(childProcesses) {}

  /// Arguments: a path and a type code.
  ErrorOrNil createFileobject(const Array& arguments);

  /// Code "F" makes a file of mode 0644, "X" one of 0755, "D" a folder of 0755. POSIX errors: 22 for an empty path or
  /// any other code, 17 when something exists at the path (links followed), what keeps the owner from being changed.
  /// For a folder that could not be made, the file manager's error; for a file, code 4 of the operation set's domain.
  ErrorOrNil createFileSystemObjectAtPath(const std::string& path, std::string_view withTypeCode);

 private:
  FileManager& fileManager_;
  host::FileSystem& fileSystem_;
  host::ChildProcesses& childProcesses_;
};

}  // namespace vantrell
