// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxMounts.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string_view>

#include <fcntl.h>
#include <sys/stat.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {
namespace {

constexpr std::size_t kIdentifierField = 0;
constexpr std::size_t kMountPointField = 4;

// What tells mounts that lie upon one another, or show the same file system, apart. An automount point counts as what
// it is; looking doesn't mount anything.
Result<std::uint64_t> mountIdentifierOf(const std::string& path) {
  const FileDescriptor object(open(path.c_str(), O_PATH | O_CLOEXEC));
  if (!object) return errnoFailure();
  struct statx status {};
  if (statx(object.get(), "", AT_EMPTY_PATH, STATX_MNT_ID, &status) != 0) return errnoFailure();
  if ((status.stx_mask & STATX_MNT_ID) == 0) return posixFailure(posix::kNotSupported);
  return status.stx_mnt_id;
}

std::string_view fieldOf(std::string_view line, std::size_t index) {
  for (; index > 0; --index) line.remove_prefix(std::min(line.size(), line.find(' ') + 1));
  return line.substr(0, line.find(' '));
}

bool isOctalDigit(char c) {
  return c >= '0' && c <= '7';
}

// The kernel writes blanks, line breaks and backslashes in a name as "\" and three octal digits.
std::string unescaped(std::string_view field) {
  std::string name;
  for (std::size_t i = 0; i < field.size(); ++i) {
    const auto digits = field.substr(i).substr(0, 4);
    if (digits.size() == 4 && digits[0] == '\\' && isOctalDigit(digits[1]) && isOctalDigit(digits[2]) &&
        isOctalDigit(digits[3])) {
      name += static_cast<char>((digits[1] - '0') * 64 + (digits[2] - '0') * 8 + (digits[3] - '0'));
      i += 3;
    } else {
      name += field[i];
    }
  }
  return name;
}

}  // namespace

Result<std::string> LinuxMounts::mountPointNameForPath(const std::string& path) {
  if (path.contains('\0')) return posixFailure(posix::kInvalidArgument);
  const auto identifier = mountIdentifierOf(path);
  if (!identifier) return failure(identifier.error());
  const auto wanted = std::to_string(*identifier);
  std::ifstream table(table_);
  for (std::string line; std::getline(table, line);) {
    if (fieldOf(line, kIdentifierField) == wanted) return unescaped(fieldOf(line, kMountPointField));
  }
  return posixFailure(posix::kNoEntry);
}

}  // namespace vantrell::host
