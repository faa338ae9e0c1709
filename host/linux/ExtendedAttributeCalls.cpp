// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/ExtendedAttributeCalls.h"

#include <string_view>
#include <utility>

#include <linux/limits.h>
#include <linux/xattr.h>
#include <sys/xattr.h>

#include "foundation/PosixCodes.h"
#include "host/posix/GrowingRead.h"

namespace vantrell::host {
bool holdsAccessControlList(const std::string& name) noexcept {
  return name == XATTR_NAME_POSIX_ACL_ACCESS || name == XATTR_NAME_POSIX_ACL_DEFAULT;
}

Result<std::vector<std::string>> listExtendedAttributes(const char* path) {
  const auto bytes = readGrowing(XATTR_LIST_MAX, [&](std::uint8_t* buffer, std::size_t size) {
    return listxattr(path, reinterpret_cast<char*>(buffer), size);
  });
  std::vector<std::string> names;
  if (!bytes) {
    if (bytes.error().isPosix(posix::kNotSupported)) return names;
    return failure(bytes.error());
  }
  forEachName(*bytes, [&](std::string_view text) {
    std::string name(text);
    if (!holdsAccessControlList(name)) names.push_back(std::move(name));
  });
  return names;
}

Result<Data> readExtendedAttribute(const char* path, const char* name) {
  return readGrowing(XATTR_SIZE_MAX,
                     [&](std::uint8_t* buffer, std::size_t size) { return getxattr(path, name, buffer, size); });
}

}  // namespace vantrell::host
