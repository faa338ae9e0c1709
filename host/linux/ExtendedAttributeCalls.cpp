// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/ExtendedAttributeCalls.h"

#include <algorithm>
#include <utility>

#include <linux/xattr.h>
#include <sys/xattr.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kFirstGuess = 1024;
// What the kernel lets grow between the question for the size and the reading grows on; somebody does that on purpose
// if it goes on like this.
constexpr int kMostAttempts = 16;

// Both calls of this kind: `call` gets a buffer and its size, and answers the size in use or -1. Kernel bounds: 64 KiB
// for a value (XATTR_SIZE_MAX) and for a list (XATTR_LIST_MAX).
template <class Call>
Result<Data> readGrowing(const Call& call) {
  Data buffer(kFirstGuess);
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    const ssize_t count = call(buffer.data(), buffer.size());
    if (count >= 0) {
      buffer.resize(static_cast<std::size_t>(count));
      return buffer;
    }
    if (errno != ERANGE) return errnoFailure();
    const ssize_t needed = call(nullptr, 0);
    if (needed < 0) return errnoFailure();
    buffer.resize(static_cast<std::size_t>(needed) + 1);
  }
  return errnoFailure(ERANGE);
}

}  // namespace

bool holdsAccessControlList(const std::string& name) noexcept {
  return name == XATTR_NAME_POSIX_ACL_ACCESS || name == XATTR_NAME_POSIX_ACL_DEFAULT;
}

Result<std::vector<std::string>> listExtendedAttributes(const char* path) {
  const auto bytes = readGrowing(
      [&](std::uint8_t* buffer, std::size_t size) { return listxattr(path, reinterpret_cast<char*>(buffer), size); });
  std::vector<std::string> names;
  if (!bytes) {
    if (bytes.error().isPosix(posix::kNotSupported)) return names;
    return failure(bytes.error());
  }
  for (auto rest = textOf(*bytes); !rest.empty();) {
    const auto end = std::min(rest.find('\0'), rest.size());
    std::string name(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (!name.empty() && !holdsAccessControlList(name)) names.push_back(std::move(name));
  }
  return names;
}

Result<Data> readExtendedAttribute(const char* path, const char* name) {
  return readGrowing([&](std::uint8_t* buffer, std::size_t size) { return getxattr(path, name, buffer, size); });
}

}  // namespace vantrell::host
