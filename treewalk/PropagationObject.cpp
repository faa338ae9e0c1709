// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "treewalk/PropagationObject.h"

#include <utility>

#include "foundation/PathUtilities.h"
#include "foundation/PosixCodes.h"
#include "treewalk/PropagationErrors.h"

namespace vantrell {

namespace file_flags = host::file_flags;

namespace {

constexpr unsigned kSetIdentityBits = 06000;

constexpr unsigned kOwnerClass = 0700;
constexpr unsigned kGroupClass = 0070;
constexpr unsigned kOthersClass = 0007;
constexpr unsigned kReadAndWrite = 0666;

// As on every system at hand, neither mode nor owner nor list can be changed under one of these.
constexpr std::uint32_t kLockingFlags =
    file_flags::kUserImmutable | file_flags::kUserAppend | file_flags::kSystemImmutable | file_flags::kSystemAppend;

bool isOrStays(std::uint32_t present, std::optional<std::uint32_t> wanted) {
  return !wanted || *wanted == present;
}

}  // namespace

std::string PropagationObject::path() const {
  return stringByAppendingPathComponent(folderPath_, relativePath_);
}

bool PropagationObject::isUserImmutable() const noexcept {
  return (status_.flags & file_flags::kUserImmutable) != 0;
}
bool PropagationObject::isLocked() const noexcept {
  return (status_.flags & kLockingFlags) != 0;
}

bool PropagationObject::hasOwner(std::optional<std::uint32_t> owner,
                                 std::optional<std::uint32_t> group) const noexcept {
  return isOrStays(status_.owner, owner) && isOrStays(status_.group, group);
}

void PropagationObject::prepare(const std::optional<const host::AccessControlList*>& list,
                                const PropagationRights& rights) {
  isPrepared_ = true;
  // One whose owner is right is most likely right in all else, which is cheaper to see by name. If it can't be held,
  // the steps find out why.
  if (rights.changesOwner() && !hasOwner(rights.owner, rights.group)) {
    (void)hold();
  } else if (list) {
    examine(*list);
  }
  // They stand beside the list, but once a list has gone the status that was read with it no longer tells them.
  if (list && rights.changesMode()) (void)ownPermissions();
}

ErrorOrNil PropagationObject::propagate(const std::optional<const host::AccessControlList*>& list,
                                        const PropagationRights& rights) {
  if (!isPrepared_) prepare(list, rights);
  if (list)
    if (auto error = setAccessControlList(*list)) return error;
  if (rights.changesOwner())
    if (auto error = setOwner(rights.owner, rights.group)) return error;
  if (rights.changesMode()) return copyOwnerMode(rights.ownerMode, rights.groupMode, rights.othersMode, rights.mode);
  return std::nullopt;
}

ErrorOrNil PropagationObject::setAccessControlList(const host::AccessControlList* list) {
  if (status_.isSymbolicLink()) return std::nullopt;
  ErrorOrNil error;
  if (!hasList_) error = handle_ ? handle_->setAccessControlList(list) : folder_.setAccessControlListOf(name_, list);
  // What has the list already was not written to, so that nobody noticed that it can't be.
  if (!error && isLocked()) error = Error::posix(posix::kNotPermitted);
  if (error) return propagation_error::accessControlListNotSet(path(), *error);
  return std::nullopt;
}

ErrorOrNil PropagationObject::setOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group) {
  const auto refusal = [&]() -> ErrorOrNil {
    if ((status_.permissions & kSetIdentityBits) == 0) return std::nullopt;
    return propagation_error::setIdentityObjectNotReowned(path());
  };
  if (auto error = refusal()) return error;
  if (hasOwner(owner, group) && !isLocked()) return std::nullopt;
  if (const auto error = hold()) return propagation_error::ownerNotChanged(path(), *error);
  if (auto error = refusal()) return error;
  if (const auto error = handle_->setOwner(owner, group)) return propagation_error::ownerNotChanged(path(), *error);
  return std::nullopt;
}

ErrorOrNil PropagationObject::copyOwnerMode(bool ownerMode, bool groupMode, bool othersMode, std::uint16_t from) {
  const unsigned classes =
      (ownerMode ? kOwnerClass : 0) | (groupMode ? kGroupClass : 0) | (othersMode ? kOthersClass : 0);
  const auto wanted = [&](unsigned present) {
    const unsigned copied = status_.isDirectory() ? classes : classes & kReadAndWrite;
    return static_cast<std::uint16_t>((present & ~copied) | (from & copied));
  };
  if (const auto& present = ownPermissions(); present && wanted(*present) == *present && !isLocked())
    return std::nullopt;
  auto error = hold();
  if (!error) {
    const auto& present = ownPermissions();
    error = present ? handle_->setPermissions(wanted(*present)) : ErrorOrNil(present.error());
  }
  if (error) return propagation_error::permissionsNotChanged(path(), *error);
  return std::nullopt;
}

ErrorOrNil PropagationObject::hold() {
  if (handle_) return std::nullopt;
  auto handle = folder_.openExaminedObject(name_, status_);
  if (!handle) return handle.error();
  auto status = (*handle)->status();
  if (!status) return status.error();
  handle_ = std::move(*handle);
  status_ = *status;
  ownPermissions_.reset();
  return std::nullopt;
}

// Where it can't be examined, the steps find out why.
void PropagationObject::examine(const host::AccessControlList* list) {
  const auto rights = folder_.examineRightsOf(name_, status_, list);
  if (!rights) return;
  ownPermissions_ = rights->ownPermissions;
  hasList_ = rights->hasList;
}

const Result<std::uint16_t>& PropagationObject::ownPermissions() {
  if (!ownPermissions_)
    ownPermissions_ = handle_ ? handle_->ownPermissions(status_) : folder_.ownPermissionsOf(name_, status_);
  return *ownPermissions_;
}

}  // namespace vantrell
