// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FileChangeCalls.h"

#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/DescriptorPath.h"
#include "host/linux/FileStatusCalls.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

constexpr unsigned kSpecialBits = 07000;
constexpr unsigned kAccessBits = 0777;
constexpr unsigned kAllBits = 07777;

ErrorOrNil changeMode(const AccessListPlace& place, unsigned mode) {
  if (place.changeMode(mode) != 0) return errorFromErrno();
  return std::nullopt;
}

// The special bits that go are gone before the list widens anything, and those that come, come when it has narrowed.
ErrorOrNil writePermissionsWithList(const AccessListPlace& place, const PosixAccessList& list, unsigned current,
                                    unsigned permissions) {
  const auto wanted = listWithPermissions(list, permissions);
  const unsigned wantedMode = (permissions & kSpecialBits) | modeOf(wanted);
  const unsigned kept = current & (permissions | kAccessBits);
  if (kept != current)
    if (auto error = changeMode(place, kept)) return error;
  if (wanted != list)
    if (auto error = storeAccessList(place, wanted)) return error;
  if (((permissions & ~current) & kSpecialBits) != 0) return changeMode(place, wantedMode);
  return std::nullopt;
}

}  // namespace

ErrorOrNil writePermissions(const AccessListPlace& place, std::uint16_t permissions) {
  const unsigned wanted = permissions & kAllBits;
  const auto status = place.status();
  if (!status) return status.error();
  if (status->isSymbolicLink()) return std::nullopt;
  const auto list = loadAccessList(place);
  if (!list && !list.error().isPosix(posix::kNotSupported)) return list.error();
  if (list && *list) return writePermissionsWithList(place, **list, status->permissions, wanted);
  return changeMode(place, wanted);
}

ErrorOrNil writeModeOfNewObject(int location, std::uint16_t permissions) {
  const DescriptorPath path(location);
  if (chmod(path.get(), permissions & kAllBits) == 0 || errno == EPERM || errno == EOPNOTSUPP) return std::nullopt;
  return errorFromErrno();
}

}  // namespace vantrell::host
