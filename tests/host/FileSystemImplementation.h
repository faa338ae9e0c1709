// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>

#include "host/FileSystem.h"

namespace vantrell::tests {

/// The decorated file system and what it decorates live together.
struct FileSystemCandidate {
  std::unique_ptr<host::FileSystem> base;
  std::unique_ptr<host::FileSystem> fileSystem;
};
struct FileSystemImplementation {
  const char* name;
  std::function<FileSystemCandidate()> make;
};

}  // namespace vantrell::tests
