// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LibraryAccessList.h"

#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

#include <acl/libacl.h>
#include <sys/acl.h>

#include "foundation/PosixCodes.h"

namespace vantrell::host {
namespace {

// The library's own entry in memory, which is what its form is made of. Written here and not by the library, whose form
// carries whatever memory held before in the gaps.
struct FormPrefix {
  unsigned long magic : 16;
  unsigned long flags : 16;
};
struct FormEntry {
  acl_tag_t tag;
  FormPrefix qualifierPrefix;
  id_t identifier;
  FormPrefix permissionsPrefix;
  unsigned permissions;
};
using FormHeader = std::size_t;  // the size of the form

constexpr unsigned long kQualifierMagic = 0x1c27;
constexpr unsigned long kPermissionsMagic = 0x1ed5;
constexpr id_t kNobody = ACL_UNDEFINED_ID;

void appendBytes(Data& form, const void* bytes, std::size_t size) {
  const auto* start = static_cast<const std::uint8_t*>(bytes);
  form.insert(form.end(), start, start + size);
}

void appendEntry(Data& form, acl_tag_t tag, std::uint8_t permissions, id_t identifier = kNobody) {
  FormEntry entry;
  std::memset(&entry, 0, sizeof entry);
  entry.tag = tag;
  entry.qualifierPrefix.magic = kQualifierMagic;
  entry.identifier = identifier;
  entry.permissionsPrefix.magic = kPermissionsMagic;
  entry.permissions = permissions;
  appendBytes(form, &entry, sizeof entry);
}

struct FreeLibraryObject {
  void operator()(void* object) const noexcept { acl_free(object); }
};
using LibraryList = std::unique_ptr<std::remove_pointer_t<acl_t>, FreeLibraryObject>;

// The size that the form gives for itself, if the library may be trusted with it.
std::optional<std::size_t> checkedSize(DataView bytes) {
  FormHeader size = 0;
  if (bytes.size() < sizeof size) return std::nullopt;
  std::memcpy(&size, bytes.data(), sizeof size);
  if (size < sizeof size || size > bytes.size() || (size - sizeof size) % sizeof(FormEntry) != 0) return std::nullopt;
  if ((size - sizeof size) / sizeof(FormEntry) > kMostNamedEntries + 4) return std::nullopt;
  return size;
}

std::optional<std::uint8_t> permissionsOf(acl_entry_t entry) {
  acl_permset_t set = nullptr;
  if (acl_get_permset(entry, &set) != 0) return std::nullopt;
  std::uint8_t permissions = 0;
  for (const acl_perm_t permission : {ACL_READ, ACL_WRITE, ACL_EXECUTE}) {
    const int granted = acl_get_perm(set, permission);
    if (granted < 0) return std::nullopt;
    if (granted > 0) permissions |= static_cast<std::uint8_t>(permission);
  }
  return permissions;
}

std::optional<std::uint32_t> identifierOf(acl_entry_t entry) {
  const std::unique_ptr<void, FreeLibraryObject> identifier(acl_get_qualifier(entry));
  if (!identifier) return std::nullopt;
  return *static_cast<const id_t*>(identifier.get());
}

/// Collects entries until one doesn't fit.
class ListBuilder {
 public:
  bool take(acl_entry_t entry) {
    acl_tag_t tag = ACL_UNDEFINED_TAG;
    const auto permissions = permissionsOf(entry);
    if (!permissions || acl_get_tag_type(entry, &tag) != 0) return false;
    switch (tag) {
      case ACL_USER_OBJ:
        return takeOnce(owner_, *permissions);
      case ACL_GROUP_OBJ:
        return takeOnce(group_, *permissions);
      case ACL_OTHER:
        return takeOnce(other_, *permissions);
      case ACL_MASK:
        return takeOnce(list_.mask, *permissions);
      case ACL_USER:
        return takeNamed(PosixAccessList::Kind::User, entry, *permissions);
      case ACL_GROUP:
        return takeNamed(PosixAccessList::Kind::Group, entry, *permissions);
      default:
        return false;
    }
  }

  std::optional<PosixAccessList> finish() {
    if (!owner_ || !group_ || !other_ || !list_.normalize()) return std::nullopt;
    list_.owner = *owner_;
    list_.group = *group_;
    list_.other = *other_;
    return std::move(list_);
  }

 private:
  static bool takeOnce(std::optional<std::uint8_t>& place, std::uint8_t permissions) {
    if (place) return false;
    place = permissions;
    return true;
  }
  bool takeNamed(PosixAccessList::Kind kind, acl_entry_t entry, std::uint8_t permissions) {
    const auto identifier = identifierOf(entry);
    if (identifier) list_.named.push_back({kind, *identifier, permissions});
    return identifier.has_value();
  }

  PosixAccessList list_;
  std::optional<std::uint8_t> owner_, group_, other_;
};

}  // namespace

Data libraryFormOfList(const PosixAccessList& list) {
  const std::size_t count = list.named.size() + (list.mask ? 4 : 3);
  const FormHeader size = sizeof size + count * sizeof(FormEntry);
  Data form;
  form.reserve(size);
  appendBytes(form, &size, sizeof size);
  appendEntry(form, ACL_USER_OBJ, list.owner);
  const auto appendNamed = [&](PosixAccessList::Kind kind, acl_tag_t tag) {
    for (const auto& entry : list.named)
      if (entry.kind == kind) appendEntry(form, tag, entry.permissions, entry.identifier);
  };
  appendNamed(PosixAccessList::Kind::User, ACL_USER);
  appendEntry(form, ACL_GROUP_OBJ, list.group);
  appendNamed(PosixAccessList::Kind::Group, ACL_GROUP);
  if (list.mask) appendEntry(form, ACL_MASK, *list.mask);
  appendEntry(form, ACL_OTHER, list.other);
  return form;
}

Result<std::optional<PosixAccessList>> takeLibraryForm(DataView& bytes) {
  const auto size = checkedSize(bytes);
  if (!size) return posixFailure(posix::kInvalidArgument);
  const Data form(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(*size));  // aligned for the library
  bytes = bytes.subspan(*size);
  const LibraryList list(acl_copy_int(form.data()));
  if (!list) return posixFailure(posix::kInvalidArgument);
  ListBuilder builder;
  bool any = false;
  acl_entry_t entry = nullptr;
  for (int which = ACL_FIRST_ENTRY; acl_get_entry(list.get(), which, &entry) == 1; which = ACL_NEXT_ENTRY) {
    if (!builder.take(entry)) return posixFailure(posix::kInvalidArgument);
    any = true;
  }
  if (!any) return std::optional<PosixAccessList>{};
  auto result = builder.finish();
  if (!result) return posixFailure(posix::kInvalidArgument);
  return result;
}

}  // namespace vantrell::host
