// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <vector>

#include "foundation/Data.h"

namespace vantrell::host {

/// A POSIX access control list, access or default, taken apart. Permissions are the three bits read 4, write 2 and
/// execute 1.
struct PosixAccessList {
  enum class Kind : std::uint8_t { User, Group };
  struct NamedEntry {
    Kind kind = Kind::User;
    std::uint32_t identifier = 0;
    std::uint8_t permissions = 0;
    auto operator<=>(const NamedEntry&) const = default;
  };

  std::uint8_t owner = 0;
  std::uint8_t group = 0;
  std::uint8_t other = 0;
  std::optional<std::uint8_t> mask;  // limits what group and named entries grant; there when an entry is named
  std::vector<NamedEntry> named;     // in ascending order, none twice

  bool operator==(const PosixAccessList&) const = default;

  /// Puts the named entries in order. False when one identifier is named twice, is none at all (-1), or the mask is
  /// missing.
  bool normalize();
};

/// What the kernel's limit for an attribute leaves room for, the four entries of every list taken off.
inline constexpr std::size_t kMostNamedEntries = (65536 - 4) / 8 - 4;

/// The list that mode bits amount to.
PosixAccessList listOfMode(unsigned mode);

/// The nine mode bits that the kernel shows for an object with this list: the mask stands in the group's place.
unsigned modeOf(const PosixAccessList& list);

/// The same list with every entry saying what it grants: nothing is held back by the mask, which is gone when no entry
/// is named.
PosixAccessList effectiveList(const PosixAccessList& list);

/// The same effective entries beside owner, group and other permissions from mode bits.
PosixAccessList listWithPermissions(const PosixAccessList& list, unsigned mode);

/// These named entries, all in force, beside the list's own effective entries.
PosixAccessList listWithNamedEntries(const PosixAccessList& list, std::vector<PosixAccessList::NamedEntry> named);

/// From the attribute's value (version 2, little-endian). Nothing for bytes that are no valid list.
std::optional<PosixAccessList> listFromAttribute(DataView bytes);
Data attributeOfList(const PosixAccessList& list);

}  // namespace vantrell::host
