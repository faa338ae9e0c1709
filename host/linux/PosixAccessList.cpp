// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/PosixAccessList.h"

#include <algorithm>
#include <utility>

#include <endian.h>
#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>

namespace vantrell::host {
namespace {

constexpr std::uint8_t kAllPermissions = 7;
constexpr std::uint32_t kNobody = 0xFFFFFFFF;  // ACL_UNDEFINED_ID
constexpr std::size_t kHeaderSize = sizeof(posix_acl_xattr_header);
constexpr std::size_t kEntrySize = sizeof(posix_acl_xattr_entry);

using NamedEntry = PosixAccessList::NamedEntry;

std::uint32_t read16(const std::uint8_t* bytes) {
  return static_cast<std::uint32_t>(bytes[0] | bytes[1] << 8);
}
std::uint32_t read32(const std::uint8_t* bytes) {
  return read16(bytes) | read16(bytes + 2) << 16;
}
void append(Data& data, std::uint32_t value, int size) {
  for (int index = 0; index < size; ++index) data.push_back(static_cast<std::uint8_t>(value >> (8 * index)));
}
void appendEntry(Data& data, std::uint32_t tag, std::uint32_t permissions, std::uint32_t identifier = kNobody) {
  append(data, tag, 2);
  append(data, permissions, 2);
  append(data, identifier, 4);
}

bool takeOnce(std::optional<std::uint8_t>& place, std::uint8_t permissions) {
  if (place) return false;
  place = permissions;
  return true;
}

std::uint8_t unionOfGrants(const PosixAccessList& list) {
  std::uint8_t all = list.group;
  for (const auto& entry : list.named) all |= entry.permissions;
  return all;
}

void setMask(PosixAccessList& list) {
  list.mask.reset();
  if (!list.named.empty()) list.mask = unionOfGrants(list);
}

void setPermissions(PosixAccessList& list, unsigned mode) {
  list.owner = mode >> 6 & kAllPermissions;
  list.group = mode >> 3 & kAllPermissions;
  list.other = mode & kAllPermissions;
}

}  // namespace

bool PosixAccessList::normalize() {
  std::ranges::sort(named);
  const auto sameName = [](const NamedEntry& one, const NamedEntry& two) {
    return one.kind == two.kind && one.identifier == two.identifier;
  };
  if (std::ranges::adjacent_find(named, sameName) != named.end()) return false;
  if (std::ranges::any_of(named, [](const NamedEntry& entry) { return entry.identifier == kNobody; })) return false;
  return named.empty() || mask;
}

PosixAccessList listOfMode(unsigned mode) {
  PosixAccessList list;
  setPermissions(list, mode);
  return list;
}

unsigned modeOf(const PosixAccessList& list) {
  return static_cast<unsigned>(list.owner << 6 | list.mask.value_or(list.group) << 3 | list.other);
}

PosixAccessList effectiveList(const PosixAccessList& list) {
  PosixAccessList result = list;
  const std::uint8_t mask = list.mask.value_or(kAllPermissions);
  result.group &= mask;
  for (auto& entry : result.named) entry.permissions &= mask;
  setMask(result);
  return result;
}

PosixAccessList listWithPermissions(const PosixAccessList& list, unsigned mode) {
  PosixAccessList result = effectiveList(list);
  setPermissions(result, mode);
  setMask(result);
  return result;
}

PosixAccessList listWithNamedEntries(const PosixAccessList& list, std::vector<NamedEntry> named) {
  PosixAccessList result = effectiveList(list);
  result.named = std::move(named);
  setMask(result);
  return result;
}

std::optional<PosixAccessList> listFromAttribute(DataView bytes) {
  if (bytes.size() < kHeaderSize || (bytes.size() - kHeaderSize) % kEntrySize != 0) return std::nullopt;
  if (read32(bytes.data()) != POSIX_ACL_XATTR_VERSION) return std::nullopt;
  PosixAccessList list;
  std::optional<std::uint8_t> owner, group, other;
  for (auto rest = bytes.subspan(kHeaderSize); !rest.empty(); rest = rest.subspan(kEntrySize)) {
    const auto wide = read16(rest.data() + 2);
    if (wide > kAllPermissions) return std::nullopt;
    const auto permissions = static_cast<std::uint8_t>(wide);
    const auto identifier = read32(rest.data() + 4);
    bool fits = true;
    switch (read16(rest.data())) {
      case ACL_USER_OBJ:
        fits = takeOnce(owner, permissions);
        break;
      case ACL_GROUP_OBJ:
        fits = takeOnce(group, permissions);
        break;
      case ACL_OTHER:
        fits = takeOnce(other, permissions);
        break;
      case ACL_MASK:
        fits = takeOnce(list.mask, permissions);
        break;
      case ACL_USER:
        list.named.push_back({PosixAccessList::Kind::User, identifier, permissions});
        break;
      case ACL_GROUP:
        list.named.push_back({PosixAccessList::Kind::Group, identifier, permissions});
        break;
      default:
        fits = false;
    }
    if (!fits) return std::nullopt;
  }
  if (!owner || !group || !other || !list.normalize()) return std::nullopt;
  list.owner = *owner;
  list.group = *group;
  list.other = *other;
  return list;
}

Data attributeOfList(const PosixAccessList& list) {
  Data data;
  data.reserve(kHeaderSize + (list.named.size() + 4) * kEntrySize);
  append(data, POSIX_ACL_XATTR_VERSION, 4);
  appendEntry(data, ACL_USER_OBJ, list.owner);
  const auto appendNamed = [&](PosixAccessList::Kind kind, std::uint32_t tag) {
    for (const auto& entry : list.named)
      if (entry.kind == kind) appendEntry(data, tag, entry.permissions, entry.identifier);
  };
  appendNamed(PosixAccessList::Kind::User, ACL_USER);
  appendEntry(data, ACL_GROUP_OBJ, list.group);
  appendNamed(PosixAccessList::Kind::Group, ACL_GROUP);
  if (list.mask) appendEntry(data, ACL_MASK, *list.mask);
  appendEntry(data, ACL_OTHER, list.other);
  return data;
}

}  // namespace vantrell::host
