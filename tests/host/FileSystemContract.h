// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/FileSystem.h"
#include "tests/host/FileSystemUnderTest.h"
#include "tests/support/TemporaryFolder.h"

/// Base of the suites that every file system must pass, real or made for tests. Each derives a fixture of its own and
/// instantiates it with fileSystemImplementations().
namespace vantrell::tests {

inline std::string implementationName(const testing::TestParamInfo<FileSystemImplementation>& info) {
  return info.param.name;
}

/// 0 for success, -1 for an error of another domain.
inline std::int64_t codeOf(const ErrorOrNil& error) {
  return !error ? 0 : error->isPosix() ? error->code() : -1;
}
template <class T>
std::int64_t codeOf(const Result<T>& result) {
  return result ? 0 : codeOf(ErrorOrNil(result.error()));
}

/// What stat says of the object itself.
inline struct stat statusOfObject(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(lstat(path.c_str(), &status), 0) << path;
  return status;
}
inline unsigned permissionsOf(const std::string& path) {
  return statusOfObject(path).st_mode & 07777;
}

/// A file-creation mask for the scope.
class ScopedFileCreationMask {
 public:
  explicit ScopedFileCreationMask(mode_t mask) : before_(umask(mask)) {}
  ScopedFileCreationMask(const ScopedFileCreationMask&) = delete;
  ScopedFileCreationMask& operator=(const ScopedFileCreationMask&) = delete;
  ~ScopedFileCreationMask() { umask(before_); }

 private:
  mode_t before_;
};

class FileSystemContractBase : public testing::TestWithParam<FileSystemImplementation> {
 protected:
  FileSystemCandidate candidate_ = GetParam().make();
  host::FileSystem& fileSystem_ = *candidate_.fileSystem;
  TemporaryFolder folder_;

  std::unique_ptr<host::DirectoryHandle> open(const std::string& path) {
    return std::move(fileSystem_.openDirectory(path, host::FollowLinks::No).value());
  }
  std::unique_ptr<host::DirectoryHandle> open() { return open(folder_.path()); }
  std::unique_ptr<host::ObjectHandle> object(const std::string& name) {
    return std::move(fileSystem_.openObject(folder_.path(name), host::FollowLinks::No).value());
  }

  void needRoot(const char* reason) {
    if (geteuid() != 0) GTEST_SKIP() << reason;
  }
};

}  // namespace vantrell::tests
