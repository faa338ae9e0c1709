// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/macos/ExtendedAttributeCalls.h"

#include <string_view>
#include <utility>

#include <sys/xattr.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/GrowingRead.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kLongestValue = 256 << 20;
constexpr std::size_t kLongestList = 16 << 20;
constexpr char kSecurityName[] = "com.apple.system.Security";  // KAUTH_FILESEC_XATTR

// Links are not to be followed where there is nothing to follow: the descriptor holds the object itself.
int optionsFor(FSCompression compression) {
  return compression == FSCompression::Expose ? XATTR_SHOWCOMPRESSION : 0;
}

// The kernel has two numbers for this.
Error attributeError() {
  return errno == EOPNOTSUPP ? Error::posix(posix::kNotSupported) : errorFromErrno();
}

}  // namespace

bool isNoAttributeName(const std::string& name) noexcept {
  return name.find('\0') != std::string::npos || name == kSecurityName;
}

Result<std::vector<std::string>> listExtendedAttributes(int object, FSCompression compression) {
  const auto list = readGrowing(kLongestList, [&](std::uint8_t* buffer, std::size_t size) {
    return flistxattr(object, reinterpret_cast<char*>(buffer), size, optionsFor(compression));
  });
  std::vector<std::string> names;
  if (!list) {
    if (list.error().isPosix(posix::kNotSupported) || list.error().isPosix(EOPNOTSUPP)) return names;
    return failure(list.error());
  }
  forEachName(*list, [&](std::string_view text) {
    std::string name(text);
    if (!isNoAttributeName(name)) names.push_back(std::move(name));
  });
  return names;
}

Result<Data> readExtendedAttribute(int object, const std::string& name) {
  auto value = readGrowing(kLongestValue, [&](std::uint8_t* buffer, std::size_t size) {
    return fgetxattr(object, name.c_str(), buffer, size, 0, 0);
  });
  if (!value && value.error().isPosix(EOPNOTSUPP)) return posixFailure(posix::kNotSupported);
  return value;
}

ErrorOrNil writeExtendedAttribute(int object, const std::string& name, DataView value) {
  if (fsetxattr(object, name.c_str(), value.data(), value.size(), 0, 0) != 0) return attributeError();
  return std::nullopt;
}

ErrorOrNil removeExtendedAttribute(int object, const std::string& name, FSCompression compression) {
  if (fremovexattr(object, name.c_str(), optionsFor(compression)) != 0) return attributeError();
  return std::nullopt;
}

}  // namespace vantrell::host
