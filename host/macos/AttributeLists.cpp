// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/AttributeLists.h"

#include <cerrno>
#include <cstring>

#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

attrlist listOf(attrgroup_t common, attrgroup_t folders = 0) {
  attrlist list{};
  list.bitmapcount = ATTR_BIT_MAP_COUNT;
  list.commonattr = common;
  list.dirattr = folders;
  return list;
}

std::uint32_t optionsOf(const ObjectPlace& place) {
  return place.follow == FollowLinks::No ? FSOPT_NOFOLLOW : 0;
}

// What every answer begins with here.
struct AnswerHeader {
  std::uint32_t length;  // of the whole answer, itself included
  attribute_set_t returned;
};

}  // namespace

ErrorOrNil writeAttribute(const ObjectPlace& place, attrgroup_t attribute, DataView value) {
  auto list = listOf(attribute);
  // Not written to, whatever the declarations say.
  auto* bytes = const_cast<std::uint8_t*>(value.data());
  const int result = place.name
                         ? setattrlistat(place.descriptor, place.name, &list, bytes, value.size(), optionsOf(place))
                         : fsetattrlist(place.descriptor, &list, bytes, value.size(), 0);
  if (result == 0) return std::nullopt;
  // With a request that is in order, an invalid argument is an attribute that there is none of.
  if (errno == EINVAL || errno == EOPNOTSUPP) return Error::posix(posix::kNotSupported);
  return errorFromErrno();
}

Result<std::optional<Data>> readVariableAttribute(const ObjectPlace& place, attrgroup_t attribute,
                                                  std::size_t maximumSize) {
  auto list = listOf(ATTR_CMN_RETURNED_ATTRS | attribute);
  Data answer(sizeof(AnswerHeader) + sizeof(attrreference_t) + maximumSize);
  const int result =
      place.name ? getattrlistat(place.descriptor, place.name, &list, answer.data(), answer.size(), optionsOf(place))
                 : fgetattrlist(place.descriptor, &list, answer.data(), answer.size(), 0);
  if (result != 0) return errnoFailure();
  AnswerHeader header;
  std::memcpy(&header, answer.data(), sizeof header);
  if ((header.returned.commonattr & attribute) == 0) return std::optional<Data>{};
  attrreference_t reference;
  std::memcpy(&reference, answer.data() + sizeof header, sizeof reference);
  if (reference.attr_length == 0) return std::optional<Data>{};
  // The offset counts from the reference itself.
  const auto start = static_cast<std::int64_t>(sizeof header) + reference.attr_dataoffset;
  const auto end = start + reference.attr_length;
  if (start < 0 || end > static_cast<std::int64_t>(answer.size())) return posixFailure(posix::kOverflow);
  return std::optional(Data(answer.begin() + start, answer.begin() + end));
}

bool isMountPoint(int folder) {
  auto list = listOf(ATTR_CMN_RETURNED_ATTRS, ATTR_DIR_MOUNTSTATUS);
  struct {
    AnswerHeader header;
    std::uint32_t status;
  } answer{};
  if (fgetattrlist(folder, &list, &answer, sizeof answer, 0) != 0) return false;
  return (answer.header.returned.dirattr & ATTR_DIR_MOUNTSTATUS) != 0 && (answer.status & DIR_MNTSTATUS_MNTPOINT) != 0;
}

}  // namespace vantrell::host
