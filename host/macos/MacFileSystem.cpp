// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacFileSystem.h"

#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/FileStatusCalls.h"
#include "host/macos/MacAccessControlList.h"
#include "host/macos/MacDirectoryHandle.h"
#include "host/macos/MacObjectHandle.h"
#include "host/macos/ObjectLookup.h"
#include "host/posix/EntryNames.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/LinkTarget.h"
#include "host/posix/PosixFileContents.h"

namespace vantrell::host {

Result<FileStatus> MacFileSystem::status(const std::string& path, FollowLinks follow) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return readFileStatus({AT_FDCWD, path.c_str(), follow});
}

ErrorOrNil MacFileSystem::setFlags(const std::string& path, std::uint32_t flags, FollowLinks follow) {
  if (holdsZero(path)) return Error::posix(posix::kInvalidArgument);
  return writeFlags({AT_FDCWD, path.c_str(), follow}, flags);
}

Result<std::unique_ptr<DirectoryHandle>> MacFileSystem::openDirectory(const std::string& path, FollowLinks follow) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return openMacDirectory(AT_FDCWD, path.c_str(), follow);
}

Result<Location> MacFileSystem::locate(const std::string& path) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  auto object = locateObject(AT_FDCWD, path, FollowLinks::No);
  if (!object) return failure(object.error());
  return Location{std::make_unique<MacDirectoryHandle>(std::move(object->folder), MacDirectoryHandle::Kind::Place),
                  std::move(object->name)};
}

Result<std::unique_ptr<ObjectHandle>> MacFileSystem::openObject(const std::string& path, FollowLinks follow) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return openMacObject(AT_FDCWD, path.c_str(), follow);
}

Result<std::unique_ptr<AccessControlList>> MacFileSystem::accessControlListFromExternalForm(DataView bytes) {
  return MacAccessControlList::fromExternalForm(bytes);
}

ErrorOrNil MacFileSystem::removeFile(const std::string& path) {
  if (holdsZero(path)) return Error::posix(posix::kInvalidArgument);
  if (unlink(path.c_str()) != 0) return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil MacFileSystem::removeDirectory(const std::string& path) {
  if (holdsZero(path)) return Error::posix(posix::kInvalidArgument);
  if (rmdir(path.c_str()) != 0) return errorFromErrno();
  return std::nullopt;
}

Result<std::string> MacFileSystem::readLink(const std::string& path) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return readLinkTarget(AT_FDCWD, path.c_str());
}

Result<std::unique_ptr<FileContents>> MacFileSystem::loadFile(const std::string& path, std::uint64_t maximumSize) {
  if (holdsZero(path)) return posixFailure(posix::kInvalidArgument);
  return loadPosixFile(path, maximumSize);
}

}  // namespace vantrell::host
