// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxFileSystem.h"

#include <climits>

#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/ErrorNumbers.h"
#include "host/linux/FileStatusCalls.h"
#include "host/linux/LinuxDirectoryHandle.h"
#include "host/linux/LinuxFileContents.h"

namespace vantrell::host {
namespace {

// The kernel would silently act on what precedes a zero byte.
bool holdsZero(const std::string& path) {
  return path.find('\0') != std::string::npos;
}

}  // namespace

Result<FileStatus> LinuxFileSystem::status(const std::string& path, FollowLinks follow) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return readFileStatus(AT_FDCWD, path.c_str(), follow == FollowLinks::No ? AT_SYMLINK_NOFOLLOW : 0);
}

ErrorOrNil LinuxFileSystem::setFlags(const std::string& path, std::uint32_t flags, FollowLinks follow) {
  if (holdsZero(path)) return Error::posix(posix::kInvalidArgument);
  return writeFileFlags(AT_FDCWD, path.c_str(), follow, flags);
}

Result<std::unique_ptr<DirectoryHandle>> LinuxFileSystem::openDirectory(const std::string& path, FollowLinks follow) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  const int noFollow = follow == FollowLinks::No ? O_NOFOLLOW : 0;
  FileDescriptor folder(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | noFollow));
  if (!folder) return errnoFailure();
  return std::make_unique<LinuxDirectoryHandle>(std::move(folder));
}

ErrorOrNil LinuxFileSystem::removeFile(const std::string& path) {
  if (holdsZero(path)) return Error::posix(posix::kInvalidArgument);
  if (unlink(path.c_str()) != 0) return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil LinuxFileSystem::removeDirectory(const std::string& path) {
  if (holdsZero(path)) return Error::posix(posix::kInvalidArgument);
  if (rmdir(path.c_str()) != 0) return errorFromErrno();
  return std::nullopt;
}

Result<std::string> LinuxFileSystem::readLink(const std::string& path) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  std::string target(PATH_MAX, '\0');
  const ssize_t length = readlink(path.c_str(), target.data(), target.size());
  if (length < 0) return errnoFailure();
  if (static_cast<std::size_t>(length) == target.size()) return posixFailure(posix::kNameTooLong);
  target.resize(static_cast<std::size_t>(length));
  return target;
}

Result<std::unique_ptr<FileContents>> LinuxFileSystem::loadFile(const std::string& path, std::uint64_t maximumSize) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return loadLinuxFile(path, maximumSize);
}

}  // namespace vantrell::host
