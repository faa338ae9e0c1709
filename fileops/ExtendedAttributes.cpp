// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/ExtendedAttributes.h"

#include <memory>
#include <utility>

#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "foundation/Value.h"

namespace vantrell {

using host::FollowLinks;
using host::FSCompression;

namespace {

FollowLinks following(bool notFollowingLinks) {
  return notFollowingLinks ? FollowLinks::No : FollowLinks::Yes;
}
FSCompression compression(bool exposed) {
  return exposed ? FSCompression::Expose : FSCompression::Hide;
}

// What is asked of a link itself takes a target all the same.
Result<std::unique_ptr<host::ObjectHandle>> openExisting(host::FileSystem& fileSystem, const std::string& path,
                                                         bool notFollowingLinks) {
  if (!fileSystem.status(path, FollowLinks::Yes)) return failure(posixErrorAtPath(Error::posix(posix::kNoEntry), path));
  auto object = fileSystem.openObject(path, following(notFollowingLinks));
  if (!object) return failure(posixErrorAtPath(object.error(), path));
  return object;
}

Result<ExtendedAttributeSet> readSet(const host::ObjectHandle& listed, const host::ObjectHandle& read,
                                     FSCompression compression) {
  const auto names = listed.extendedAttributeNames(compression);
  if (!names) return failure(names.error());
  ExtendedAttributeSet set;
  for (const auto& name : *names) {
    auto value = read.extendedAttribute(name);
    if (value && !value->empty()) set.emplace(name, std::move(*value));
  }
  return set;
}

}  // namespace

Error posixErrorAtPath(const Error& posixError, const std::string& path) {
  return {posixError.domain(), posixError.code(), Dictionary{{NSFilePathErrorKey, displayablePath(path)}}};
}

Result<ExtendedAttributeSet> extendedAttributesForItemAtPath(host::FileSystem& fileSystem, const std::string& path,
                                                             bool notFollowingLinks, bool exposingFSCompression) {
  if (path.empty()) return posixFailure(posix::kInvalidArgument);
  const auto read = openExisting(fileSystem, path, false);
  if (!read) return failure(read.error());
  std::unique_ptr<host::ObjectHandle> link;
  if (notFollowingLinks) {
    auto object = fileSystem.openObject(path, FollowLinks::No);
    if (!object) return failure(posixErrorAtPath(object.error(), path));
    link = std::move(*object);
  }
  auto set = readSet(link ? *link : **read, **read, compression(exposingFSCompression));
  if (!set) return failure(posixErrorAtPath(set.error(), path));
  return set;
}

Result<ExtendedAttributeSet> extendedAttributesOf(const host::ObjectHandle& object) {
  return readSet(object, object, FSCompression::Hide);
}

ErrorOrNil setForItemAtPath(host::FileSystem& fileSystem, const std::string& path, DataView value,
                            const std::string& ofExtendedAttribute, bool notFollowingLinks) {
  if (path.empty() || value.empty() || ofExtendedAttribute.empty()) return Error::posix(posix::kInvalidArgument);
  const auto object = openExisting(fileSystem, path, notFollowingLinks);
  if (!object) return object.error();
  const auto error = (*object)->setExtendedAttribute(ofExtendedAttribute, value);
  return error ? ErrorOrNil(posixErrorAtPath(*error, path)) : std::nullopt;
}

ErrorOrNil removeFromItemAtPath(host::FileSystem& fileSystem, const std::string& path,
                                const std::string& extendedAttribute, bool notFollowingLinks,
                                bool includingFSCompression) {
  if (path.empty() || extendedAttribute.empty()) return Error::posix(posix::kInvalidArgument);
  const auto object = openExisting(fileSystem, path, notFollowingLinks);
  if (!object) return object.error();
  const auto error = (*object)->removeExtendedAttribute(extendedAttribute, compression(includingFSCompression));
  return error ? ErrorOrNil(posixErrorAtPath(*error, path)) : std::nullopt;
}

}  // namespace vantrell
