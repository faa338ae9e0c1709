// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "foundation/FileManagerCopy.h"

#include "foundation/PosixCodes.h"
#include "foundation/TreeWalkCursor.h"

namespace vantrell {

using host::DirectoryHandle;
using host::FileType;
using host::FollowLinks;
using host::FSCompression;
using host::MountPoints;
namespace file_flags = host::file_flags;

namespace {

constexpr std::uint32_t kLockingFlags =
    file_flags::kUserImmutable | file_flags::kUserAppend | file_flags::kSystemImmutable | file_flags::kSystemAppend;
constexpr std::uint16_t kWhileBeingMade = 0700;

bool isMissingSupport(const Error& error) {
  return error.isPosix(posix::kNotSupported);
}
bool isGone(const Error& error) {
  return error.isPosix(posix::kNoEntry);
}
ErrorOrNil unlessUnsupported(ErrorOrNil error) {
  return error && isMissingSupport(*error) ? std::nullopt : error;
}
bool isSameObject(const host::FileStatus& one, const host::FileStatus& other) {
  return one.device == other.device && one.inode == other.inode;
}

}  // namespace

Result<ObjectMetadata> ObjectMetadata::of(const host::ObjectHandle& object) {
  ObjectMetadata metadata;
  const auto status = object.status();
  if (!status) return failure(status.error());
  metadata.status = *status;
  const auto permissions = object.ownPermissions(*status);
  if (!permissions) return failure(permissions.error());
  metadata.status.permissions = *permissions;
  const auto names = object.extendedAttributeNames(FSCompression::Hide);
  if (!names && !isMissingSupport(names.error())) return failure(names.error());
  if (names) {
    for (const auto& name : *names) {
      auto value = object.extendedAttribute(name);
      if (!value && value.error().isPosix(posix::kNoAttribute)) continue;  // removed since
      if (!value) return failure(value.error());
      metadata.extendedAttributes.emplace_back(name, std::move(*value));
    }
  }
  auto list = object.accessControlList();
  if (!list && !isMissingSupport(list.error())) return failure(list.error());
  if (list) metadata.accessControlList = std::move(*list);
  return metadata;
}

// The owner first, for changing it costs the set-user-ID bit; the times behind all that sets them, and the flags last.
ErrorOrNil ObjectMetadata::imposeOn(host::ObjectHandle& object) const {
  if (auto error = object.setOwner(status.owner, status.group)) return error;
  if (auto error = object.setPermissions(status.permissions)) return error;
  for (const auto& [name, value] : extendedAttributes) {
    if (auto error = unlessUnsupported(object.setExtendedAttribute(name, value))) return error;
  }
  if (auto error = unlessUnsupported(object.setAccessControlList(accessControlList.get()))) return error;
  if (auto error = object.setTimes(status.accessed, status.modified)) return error;
  return unlessUnsupported(object.setFlags(status.flags));
}

std::optional<FileManagerCopy::Failure> FileManagerCopy::copy(const char* sourceName, const char* name) {
  const auto failed = [this](Error error) { return Failure{std::move(error), path_}; };
  const auto object = source_.openObject(sourceName, FollowLinks::No);
  if (!object) return failed(object.error());
  auto metadata = ObjectMetadata::of(**object);
  if (!metadata) return failed(metadata.error());
  if (metadata->status.flags & kLockingFlags) return failed(Error::posix(posix::kNotPermitted));
  if (!metadata->status.isDirectory()) {
    if (auto error = copyObject(source_, sourceName, *metadata, name)) return failed(*error);
    return std::nullopt;
  }
  if (auto error = enterNewFolder(name, std::move(*metadata))) return failed(*error);
  if (auto failure = copyContents(**object)) return failure;
  if (auto error = leaveNewFolder()) return failed(*error);
  return std::nullopt;
}

std::optional<FileManagerCopy::Failure> FileManagerCopy::copyContents(const host::ObjectHandle& object) {
  auto top = object.openDirectory();
  if (!top) return Failure{top.error(), path_};
  using Event = TreeWalkCursor::Event;
  TreeWalkCursor cursor(std::move(*top), path_, MountPoints::Enter);
  for (;;) {
    const auto event = cursor.next();
    if (!event) return Failure{event.error(), path_};
    ErrorOrNil error;
    switch (*event) {
      case Event::Entry: {
        auto folder = copyEntry(cursor.entry());
        if (!folder)
          error = folder.error();
        else if (*folder)
          cursor.descend(std::move(*folder));
        break;
      }
      case Event::Left:
        error = leaveNewFolder();
        break;
      case Event::CannotDescend:
      case Event::CannotRead:
        error = cursor.error();
        break;
      case Event::End:
        return std::nullopt;
    }
    if (error) return Failure{*error, cursor.path()};
  }
}

// The folder to go on in, null for anything else.
Result<std::unique_ptr<DirectoryHandle>> FileManagerCopy::copyEntry(TreeEntry& entry) {
  const auto object = entry.folder().openObject(entry.name(), FollowLinks::No);
  if (!object && isGone(object.error())) return nullptr;
  if (!object) return failure(object.error());
  auto metadata = ObjectMetadata::of(**object);
  if (!metadata) return failure(metadata.error());
  if (metadata->status.flags & kLockingFlags) return posixFailure(posix::kNotPermitted);
  if (metadata->status.device != levels_.front().metadata.status.device) return posixFailure(posix::kBusy);
  if (!metadata->status.isDirectory()) {
    if (auto error = copyObject(entry.folder(), entry.name(), *metadata, entry.name())) return failure(*error);
    return nullptr;
  }
  auto folder = (*object)->openDirectory();
  if (!folder) return folder;
  if (auto error = enterNewFolder(entry.name(), std::move(*metadata))) return failure(*error);
  return folder;
}

ErrorOrNil FileManagerCopy::copyObject(DirectoryHandle& from, const char* name, const ObjectMetadata& metadata,
                                       const char* newName) {
  ErrorOrNil error;
  switch (metadata.status.type) {
    case FileType::Regular:
      error = copyFile(from, name, metadata, newName);
      break;
    case FileType::SymbolicLink: {
      const auto target = from.readLinkOf(name);
      error = target ? here().makeSymbolicLink(newName, *target) : target.error();
      break;
    }
    default:
      error = here().makeSpecialFile(newName, metadata.status);
  }
  if (error) return error;
  const auto made = here().openObject(newName, FollowLinks::No);
  return made ? metadata.imposeOn(**made) : made.error();
}

ErrorOrNil FileManagerCopy::copyFile(DirectoryHandle& from, const char* name, const ObjectMetadata& metadata,
                                     const char* newName) {
  const auto reader = from.openFile(name);
  if (!reader) return reader.error();
  const auto status = (*reader)->status();
  if (!status) return status.error();
  // Another file by now, whose content is not to come under this one's owner and permissions.
  if (!isSameObject(*status, metadata.status)) return Error::posix(posix::kNoEntry);
  const auto writer = here().createFile(newName, kWhileBeingMade);
  return writer ? (*writer)->copyFrom(**reader) : writer.error();
}

ErrorOrNil FileManagerCopy::enterNewFolder(const char* name, ObjectMetadata metadata) {
  if (auto error = here().makeDirectory(name, kWhileBeingMade)) return error;
  auto folder = here().openDirectory(name, MountPoints::Refuse);
  if (!folder) return folder.error();
  inner_ = std::move(*folder);
  levels_.push_back({name, std::move(metadata)});
  return std::nullopt;
}

ErrorOrNil FileManagerCopy::leaveNewFolder() {
  const auto left = std::move(levels_.back());
  levels_.pop_back();
  if (levels_.empty()) {
    inner_.reset();
  } else {
    auto parent = inner_->openParent();
    if (!parent) return parent.error();
    inner_ = std::move(*parent);
  }
  const auto made = here().openObject(left.name.c_str(), FollowLinks::No);
  return made ? left.metadata.imposeOn(**made) : made.error();
}

}  // namespace vantrell
