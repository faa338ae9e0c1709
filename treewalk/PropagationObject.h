// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/DirectoryHandle.h"
#include "treewalk/PropagationRights.h"

namespace vantrell {

/// An object whose rights are being changed, as an entry of the folder that holds it, with what is known of it.
///
/// What it already has is not set again, except on a locked object, where any attempt is to fail. Whatever is worked
/// out from an object's present state is set on that same object: it is held for that, and looked at again, because its
/// name may have come to mean another one, whose owner would be given rights by the first one's.
///
/// Used once, by one thread at a time; what it refers to must outlive it. Each step returns nothing on success.
class PropagationObject {
 public:
  /// `name` is followed by a zero byte; `knownStatistics` is the object's own. Joined, `folderPath` and `relativePath`
  /// are what messages show for the object.
  PropagationObject(host::DirectoryHandle& folder, const char* name, const host::FileStatus& knownStatistics,
                    std::string_view folderPath, std::string_view relativePath)
      : folder_(folder), name_(name), status_(knownStatistics), folderPath_(folderPath), relativePath_(relativePath) {}

  std::string path() const;
  /// True while a descriptor of it is open.
  bool isHeld() const noexcept { return handle_ != nullptr; }
  /// What the locked objects are that a propagation may be told to skip.
  bool isUserImmutable() const noexcept;

  /// Reads what `propagate` with the same arguments will want to know, and changes nothing. May be left out; another
  /// thread may do it before.
  void prepare(const std::optional<const host::AccessControlList*>& list, const PropagationRights& rights);

  /// Of the steps below, those that are asked for, in this order, up to the first that fails. `list` is nothing where
  /// the object's own list is to stay.
  ErrorOrNil propagate(const std::optional<const host::AccessControlList*>& list, const PropagationRights& rights);

  /// A symbolic link is left alone. Null and an empty list remove what there is. Error 12.
  ErrorOrNil setAccessControlList(const host::AccessControlList* list);

  /// Of a link itself. Refused for anything with a set-user-ID or set-group-ID bit (POSIX error 22), whoever owns it;
  /// error 14.
  ErrorOrNil setOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group);

  /// Whole classes for a folder, reading and writing alone for anything else: that may be executed by whom it was
  /// before. The other classes and the special bits stay. Error 15.
  ErrorOrNil copyOwnerMode(bool ownerMode, bool groupMode, bool othersMode, std::uint16_t from);

 private:
  bool isLocked() const noexcept;
  bool hasOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group) const noexcept;
  ErrorOrNil hold();
  void examine(const host::AccessControlList* list);
  const Result<std::uint16_t>& ownPermissions();

  host::DirectoryHandle& folder_;
  const char* name_;
  host::FileStatus status_;
  std::string_view folderPath_;
  std::string_view relativePath_;
  std::unique_ptr<host::ObjectHandle> handle_;
  std::optional<Result<std::uint16_t>> ownPermissions_;
  bool isPrepared_ = false;
  bool hasList_ = false;  // the one that it is to have, as was seen without holding it
};

}  // namespace vantrell
