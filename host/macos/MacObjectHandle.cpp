// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/MacObjectHandle.h"

#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/AccessControlCalls.h"
#include "host/macos/ExtendedAttributeCalls.h"
#include "host/macos/FileStatusCalls.h"
#include "host/macos/MacDirectoryHandle.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/OwnerCalls.h"

namespace vantrell::host {
namespace {

Result<std::unique_ptr<ObjectHandle>> openNamed(int folder, const char* name, FollowLinks follow) {
  auto object = locateObject(folder, name, follow);
  if (!object) return failure(object.error());
  const auto status = readFileStatus({object->folder.get(), object->name.c_str()});
  if (!status) return failure(status.error());
  return std::make_unique<MacObjectHandle>(std::move(*object), *status);
}

// What may not be opened by this user can have its status and rights changed all the same; what could be opened a
// moment ago has become a socket.
bool saysNotToOpen(int number) {
  return number == EACCES || number == EPERM || number == EOPNOTSUPP || number == ENXIO;
}

Result<std::unique_ptr<ObjectHandle>> openObjectOfType(int folder, const char* name, FollowLinks follow,
                                                       FileType type) {
  if (canBeHeld(type)) {
    FileDescriptor object = holdObject(folder, name, follow);
    if (object) return std::make_unique<MacObjectHandle>(std::move(object));
    if (!saysNotToOpen(errno)) return errnoFailure();
  }
  return openNamed(folder, name, follow);
}

}  // namespace

Result<FileStatus> MacObjectHandle::status() const {
  if (isHeld()) return readFileStatus({descriptor_.get()});
  auto status = readFileStatus({descriptor_.get(), name_.c_str()});
  if (status && (status->type != type_ || status->device != device_ || status->inode != inode_))
    return posixFailure(posix::kNoEntry);
  return status;
}

Result<ObjectPlace> MacObjectHandle::place() const {
  if (isHeld()) return ObjectPlace{descriptor_.get()};
  const auto present = status();
  if (!present) return failure(present.error());
  return ObjectPlace{descriptor_.get(), name_.c_str()};
}

// The kernel keeps attributes for these types only and has no calls for entries of a folder.
Result<int> MacObjectHandle::attributeDescriptor(FileDescriptor& opened) const {
  if (isHeld()) return descriptor_.get();
  const auto named = place();
  if (!named) return failure(named.error());
  if (!canBeHeld(type_)) return posixFailure(posix::kNotSupported);
  opened = holdObject(named->descriptor, named->name, FollowLinks::No);
  if (!opened) return errnoFailure();
  return opened.get();
}

Result<std::unique_ptr<DirectoryHandle>> MacObjectHandle::openDirectory() const {
  const auto found = place();
  if (!found) return failure(found.error());
  return openMacDirectory(found->descriptor, found->name ? found->name : ".");
}

ErrorOrNil MacObjectHandle::setOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group) {
  const auto found = place();
  if (!found) return found.error();
  if (found->name) return writeOwnerOfEntry(found->descriptor, found->name, owner, group);
  return writeOwner(owner, group, [&](std::uint32_t newOwner, std::uint32_t newGroup) {
    return fchown(found->descriptor, newOwner, newGroup);
  });
}

ErrorOrNil MacObjectHandle::setPermissions(std::uint16_t permissions) {
  const auto found = place();
  return found ? writePermissions(*found, permissions) : found.error();
}

ErrorOrNil MacObjectHandle::setFlags(std::uint32_t flags) {
  const auto found = place();
  return found ? writeFlags(*found, flags) : found.error();
}

ErrorOrNil MacObjectHandle::setTimes(std::optional<Date> accessed, std::optional<Date> modified) {
  const auto found = place();
  return found ? writeTimes(*found, accessed, modified) : found.error();
}

ErrorOrNil MacObjectHandle::touch() {
  const auto found = place();
  return found ? writePresentTime(*found) : found.error();
}

Result<std::vector<std::string>> MacObjectHandle::extendedAttributeNames(FSCompression compression) const {
  FileDescriptor opened;
  const auto object = attributeDescriptor(opened);
  if (object) return listExtendedAttributes(*object, compression);
  if (object.error().isPosix(posix::kNotSupported)) return std::vector<std::string>();
  return failure(object.error());
}

Result<Data> MacObjectHandle::extendedAttribute(const std::string& name) const {
  if (isNoAttributeName(name)) return posixFailure(posix::kInvalidArgument);
  FileDescriptor opened;
  const auto object = attributeDescriptor(opened);
  if (!object) return failure(object.error());
  return readExtendedAttribute(*object, name);
}

ErrorOrNil MacObjectHandle::setExtendedAttribute(const std::string& name, DataView value) {
  if (isNoAttributeName(name)) return Error::posix(posix::kInvalidArgument);
  FileDescriptor opened;
  const auto object = attributeDescriptor(opened);
  return object ? writeExtendedAttribute(*object, name, value) : object.error();
}

ErrorOrNil MacObjectHandle::removeExtendedAttribute(const std::string& name, FSCompression compression) {
  if (isNoAttributeName(name)) return Error::posix(posix::kInvalidArgument);
  FileDescriptor opened;
  const auto object = attributeDescriptor(opened);
  return object ? host::removeExtendedAttribute(*object, name, compression) : object.error();
}

Result<std::unique_ptr<AccessControlList>> MacObjectHandle::accessControlList() const {
  const auto found = place();
  if (!found) return failure(found.error());
  return readAccessControlList(*found);
}

ErrorOrNil MacObjectHandle::setAccessControlList(const AccessControlList* list) {
  const auto found = place();
  return found ? writeAccessControlList(*found, list) : found.error();
}

Result<std::unique_ptr<ObjectHandle>> openMacObject(int folder, const char* name, FollowLinks follow) {
  const auto status = readFileStatus({folder, name, follow});
  if (!status) return failure(status.error());
  return openObjectOfType(folder, name, follow, status->type);
}

Result<std::unique_ptr<ObjectHandle>> openExaminedMacObject(int folder, const char* name, const FileStatus& status) {
  return openObjectOfType(folder, name, FollowLinks::No, status.type);
}

}  // namespace vantrell::host
