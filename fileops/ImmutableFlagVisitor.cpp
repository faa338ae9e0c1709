// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "fileops/ImmutableFlagVisitor.h"

#include "foundation/PosixCodes.h"

namespace vantrell {

using host::FileStatus;
using host::FileType;
using host::FollowLinks;

std::uint32_t withImmutableFlag(std::uint32_t flags, bool value) noexcept {
  return value ? flags | host::file_flags::kUserImmutable : flags & ~host::file_flags::kUserImmutable;
}

ErrorOrNil immutableFlagFailure(const ErrorOrNil& error, bool value) {
  if (error && !value && error->isPosix(posix::kNotSupported)) return std::nullopt;
  return error;
}

std::uint32_t fileSystemIDOf(const FileStatus& status) noexcept {
  return static_cast<std::uint32_t>(status.device);
}

Result<TreeVisitor::Enter> ImmutableFlagVisitor::enter(TreeEntry& entry) {
  if (entry.type() == FileType::SymbolicLink && followLinks_ == FollowLinks::No) return Enter::Skip;
  const auto status = entry.folder().statusOf(entry.name(), FollowLinks::No);
  if (!status) return skipIfGone(status.error());
  if (onlyFileSystem_ && fileSystemIDOf(*status) != *onlyFileSystem_) return Enter::Skip;
  if (!status->isSymbolicLink()) {
    if (const auto error = change(entry, *status, FollowLinks::No)) return skipIfGone(*error);
    return status->isDirectory() ? Enter::Descend : Enter::Skip;
  }
  if (followLinks_ == FollowLinks::No) return Enter::Skip;
  const auto target = entry.folder().statusOf(entry.name(), FollowLinks::Yes);
  if (!target) return Enter::Skip;
  if (const auto error = change(entry, *target, FollowLinks::Yes)) return failure(*error);
  return Enter::Skip;
}

// What has gone needs no clearing for its removal; whoever asked for its flag is told.
Result<TreeVisitor::Enter> ImmutableFlagVisitor::skipIfGone(const Error& error) const {
  if (followLinks_ == FollowLinks::No && error.isPosix(posix::kNoEntry)) return Enter::Skip;
  return failure(error);
}

ErrorOrNil ImmutableFlagVisitor::change(TreeEntry& entry, const FileStatus& status, FollowLinks follow) const {
  const auto flags = withImmutableFlag(status.flags, value_);
  if (flags == status.flags) return std::nullopt;
  return immutableFlagFailure(entry.folder().setFlagsOf(entry.name(), flags, follow), value_);
}

}  // namespace vantrell
