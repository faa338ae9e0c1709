// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/FileChangeCalls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/linux/AccessControlCalls.h"
#include "host/linux/DescriptorPath.h"
#include "host/linux/ErrorNumbers.h"
#include "host/linux/FileStatusCalls.h"

namespace vantrell::host {
namespace {

constexpr std::uint32_t kUnchanged = 0xFFFFFFFF;  // to the kernel, hence no identifier
constexpr unsigned kSpecialBits = 07000;
constexpr unsigned kAccessBits = 0777;
constexpr unsigned kAllBits = 07777;

ErrorOrNil changeMode(const DescriptorPath& path, unsigned mode) {
  if (chmod(path.get(), mode) != 0) return errorFromErrno();
  return std::nullopt;
}

// The special bits that go are gone before the list widens anything, and those that come, come when it has narrowed.
ErrorOrNil writePermissionsWithList(const DescriptorPath& path, const PosixAccessList& list, unsigned current,
                                    unsigned permissions) {
  const auto wanted = listWithPermissions(list, permissions);
  const unsigned wantedMode = (permissions & kSpecialBits) | modeOf(wanted);
  const unsigned kept = current & (permissions | kAccessBits);
  if (kept != current)
    if (auto error = changeMode(path, kept)) return error;
  if (wanted != list)
    if (auto error = storeAccessList(path.get(), wanted)) return error;
  if (((permissions & ~current) & kSpecialBits) != 0) return changeMode(path, wantedMode);
  return std::nullopt;
}

}  // namespace

ErrorOrNil writeOwner(int folder, const char* name, int flags, std::optional<std::uint32_t> owner,
                      std::optional<std::uint32_t> group) {
  if (owner == kUnchanged || group == kUnchanged) return Error::posix(posix::kInvalidArgument);
  if (!owner && !group) return std::nullopt;
  if (fchownat(folder, name, owner.value_or(kUnchanged), group.value_or(kUnchanged), flags) != 0)
    return errorFromErrno();
  return std::nullopt;
}

ErrorOrNil writePermissions(int location, std::uint16_t permissions) {
  const unsigned wanted = permissions & kAllBits;
  const auto status = readFileStatus(location, "", AT_EMPTY_PATH);
  if (!status) return status.error();
  if (status->isSymbolicLink()) return std::nullopt;
  const DescriptorPath path(location);
  const auto list = loadAccessList(AccessListPlace(location));
  if (!list && !list.error().isPosix(posix::kNotSupported)) return list.error();
  if (list && *list) return writePermissionsWithList(path, **list, status->permissions, wanted);
  return changeMode(path, wanted);
}

ErrorOrNil writeModeOfNewObject(int location, std::uint16_t permissions) {
  const DescriptorPath path(location);
  if (chmod(path.get(), permissions & kAllBits) == 0 || errno == EPERM || errno == EOPNOTSUPP) return std::nullopt;
  return errorFromErrno();
}

}  // namespace vantrell::host
