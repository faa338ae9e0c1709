// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

#include "foundation/Error.h"
#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {

/// Calls `change` with both identifiers, as chown takes them and answers. What is left out stays; nothing is done when
/// both are.
template <class Change>
ErrorOrNil writeOwner(std::optional<std::uint32_t> owner, std::optional<std::uint32_t> group, const Change& change) {
  constexpr std::uint32_t kUnchanged = 0xFFFFFFFF;  // to the kernel, hence no identifier
  if (owner == kUnchanged || group == kUnchanged) return Error::posix(posix::kInvalidArgument);
  if (!owner && !group) return std::nullopt;
  if (change(owner.value_or(kUnchanged), group.value_or(kUnchanged)) != 0) return errorFromErrno();
  return std::nullopt;
}

/// Of the entry itself, never through a link.
inline ErrorOrNil writeOwnerOfEntry(int folder, const char* name, std::optional<std::uint32_t> owner,
                                    std::optional<std::uint32_t> group) {
  return writeOwner(owner, group, [&](std::uint32_t newOwner, std::uint32_t newGroup) {
    return fchownat(folder, name, newOwner, newGroup, AT_SYMLINK_NOFOLLOW);
  });
}

}  // namespace vantrell::host
