// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include "foundation/TreeWalk.h"
#include "host/FileSystem.h"

namespace vantrell {

/// `flags` with the user-immutable flag set or cleared.
std::uint32_t withImmutableFlag(std::uint32_t flags, bool value) noexcept;

/// A failed change of flags as its caller sees it: where flags don't exist there was nothing to clear.
ErrorOrNil immutableFlagFailure(const ErrorOrNil& error, bool value);

/// Device number as far as file-system identifiers carry it.
std::uint32_t fileSystemIDOf(const host::FileStatus& status) noexcept;

/// Sets or clears the user-immutable flag of everything that a walk meets; an object whose flag is as it should be
/// costs no call but that for its status. Folders that can't be read are passed over, as the platform's enumerator
/// does. Stateless, for walks on two threads.
class ImmutableFlagVisitor final : public TreeVisitor {
 public:
  /// With FollowLinks::No, for removals, symbolic links and what has gone meanwhile are left alone, else the flag is
  /// their target's (one that is missing has none). With `onlyFileSystem` objects on other file systems are neither
  /// changed nor entered.
  ImmutableFlagVisitor(bool value, host::FollowLinks followLinks, std::optional<std::uint32_t> onlyFileSystem = {})
      : value_(value), followLinks_(followLinks), onlyFileSystem_(onlyFileSystem) {}

  Result<Enter> enter(TreeEntry& entry) override;

 private:
  Result<Enter> skipIfGone(const Error& error) const;
  ErrorOrNil change(TreeEntry& entry, const host::FileStatus& status, host::FollowLinks follow) const;

  bool value_;
  host::FollowLinks followLinks_;
  std::optional<std::uint32_t> onlyFileSystem_;
};

}  // namespace vantrell
