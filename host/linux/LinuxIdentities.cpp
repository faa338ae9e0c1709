// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxIdentities.h"

#include <cerrno>
#include <cstddef>

#include <pwd.h>

namespace vantrell::host {
namespace {

constexpr std::size_t kUsualEntrySize = 4096;
constexpr std::size_t kLargestEntrySize = std::size_t{1} << 20;

/// Calls `read(entry, text, textSize, &result)`, which is one of getpwent_r and its like, with as much room as it
/// asks for. An entry beyond all measure counts as an error.
template <class Read>
int readEntry(std::vector<char>& text, passwd& entry, passwd*& result, Read read) {
  for (;;) {
    const int problem = read(&entry, text.data(), text.size(), &result);
    if (problem == EINTR) continue;
    if (problem != ERANGE || text.size() >= kLargestEntrySize) return problem;
    text.resize(text.size() * 4);
  }
}

}  // namespace

std::vector<std::uint32_t> LinuxIdentities::userIDsOfUserDatabase() {
  std::vector<std::uint32_t> userIDs;
  std::vector<char> text(kUsualEntrySize);
  const std::lock_guard lock(enumeration_);
  setpwent();
  for (;;) {
    passwd entry{};
    passwd* result = nullptr;
    if (readEntry(text, entry, result, getpwent_r) != 0 || !result) break;
    userIDs.push_back(result->pw_uid);
  }
  endpwent();
  return userIDs;
}

bool LinuxIdentities::mayBeUserID(std::uint32_t userID) {
  std::vector<char> text(kUsualEntrySize);
  passwd entry{};
  passwd* result = nullptr;
  const int problem =
      readEntry(text, entry, result, [userID](auto... arguments) { return getpwuid_r(userID, arguments...); });
  // POSIX asks for 0 where there is no such user; these are what some directory services say instead.
  const bool isNobody = problem == 0 || problem == ENOENT || problem == ESRCH || problem == EBADF || problem == EPERM;
  return result || !isNobody;
}

}  // namespace vantrell::host
