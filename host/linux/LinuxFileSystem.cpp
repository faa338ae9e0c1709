// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxFileSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/FileStatusCalls.h"
#include "host/linux/LinuxDirectoryHandle.h"
#include "host/linux/LinuxObjectHandle.h"
#include "host/linux/PosixAccessControlList.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/LinkTarget.h"
#include "host/posix/PosixFileContents.h"

namespace vantrell::host {
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

Result<Location> LinuxFileSystem::locate(const std::string& path) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  auto split = splitPath(path);
  if (!split) return posixFailure(posix::kInvalidArgument);
  FileDescriptor folder(open(split->folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return errnoFailure();
  return Location{std::make_unique<LinuxDirectoryHandle>(std::move(folder)), std::move(split->name)};
}

Result<std::unique_ptr<ObjectHandle>> LinuxFileSystem::openObject(const std::string& path, FollowLinks follow) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return openLinuxObject(AT_FDCWD, path.c_str(), follow);
}

Result<std::unique_ptr<AccessControlList>> LinuxFileSystem::accessControlListFromExternalForm(DataView bytes) {
  return PosixAccessControlList::fromExternalForm(bytes);
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
  return readLinkTarget(AT_FDCWD, path.c_str());
}

Result<std::unique_ptr<FileContents>> LinuxFileSystem::loadFile(const std::string& path, std::uint64_t maximumSize) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return loadPosixFile(path, maximumSize);
}

}  // namespace vantrell::host
