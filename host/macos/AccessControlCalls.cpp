// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/AccessControlCalls.h"

#include <cstring>
#include <utility>

#include <sys/attr.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/macos/AttributeLists.h"
#include "host/macos/FileStatusCalls.h"

namespace vantrell::host {
namespace {

using List = std::unique_ptr<MacAccessControlList>;

// Null for an object without a list, and for one with a list that says nothing.
Result<List> readList(const ObjectPlace& place) {
  const auto bytes = readVariableAttribute(place, ATTR_CMN_EXTENDED_SECURITY, MacAccessControlList::kMaximumNativeSize);
  if (!bytes) return failure(bytes.error());
  if (!*bytes) return nullptr;
  auto list = MacAccessControlList::fromNativeForm(**bytes);
  if (list && *list && (*list)->isEmpty()) return nullptr;
  return list;
}

// A list to be set, where null stands for none.
struct Wanted {
  bool isOurs = true;  // the list of another host can't be set
  const MacAccessControlList* list = nullptr;

  explicit Wanted(const AccessControlList* given) {
    if (!given) return;
    const auto* ours = dynamic_cast<const MacAccessControlList*>(given);
    isOurs = ours != nullptr;
    if (ours && !ours->isEmpty()) list = ours;
  }
  bool isIn(const List& present) const { return list && present ? *list == *present : !list && !present; }
};

}  // namespace

Result<std::unique_ptr<AccessControlList>> readAccessControlList(const ObjectPlace& place) {
  auto list = readList(place);
  if (!list) return failure(list.error());
  // The kernel tells nothing of a list where there can be none.
  if (!*list && fpathconf(place.descriptor, _PC_EXTENDED_SECURITY_NP) == 0) return posixFailure(posix::kNotSupported);
  return std::move(*list);
}

Result<ExaminedRights> examineRights(const ObjectPlace& place, const FileStatus& status,
                                     const AccessControlList* list) {
  ExaminedRights rights{status.permissions, false};
  if (status.isSymbolicLink()) return rights;
  const auto present = readList(place);
  if (!present) return failure(present.error());
  const Wanted wanted(list);
  rights.hasList = wanted.isOurs && wanted.isIn(*present);
  return rights;
}

ErrorOrNil writeAccessControlList(const ObjectPlace& place, const AccessControlList* list) {
  const Wanted wanted(list);
  if (!wanted.isOurs) return Error::posix(posix::kInvalidArgument);
  const auto status = readFileStatus(place);
  if (!status) return status.error();
  if (status->isSymbolicLink()) return wanted.list ? ErrorOrNil(Error::posix(posix::kNotSupported)) : std::nullopt;
  const auto present = readList(place);
  if (present && wanted.isIn(*present)) return std::nullopt;
  // A reference and, right behind it, the form.
  const Data form = wanted.list ? wanted.list->nativeForm() : MacAccessControlList::nativeFormOfNone();
  const attrreference_t reference{sizeof reference, static_cast<std::uint32_t>(form.size())};
  Data value(sizeof reference);
  std::memcpy(value.data(), &reference, sizeof reference);
  value.insert(value.end(), form.begin(), form.end());
  return writeAttribute(place, ATTR_CMN_EXTENDED_SECURITY, value);
}

}  // namespace vantrell::host
