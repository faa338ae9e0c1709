// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/posix/PosixIdentities.h"

#include <cerrno>
#include <cstddef>

#include <pwd.h>

namespace vantrell::host {
namespace {

constexpr std::size_t kUsualEntrySize = 4096;
constexpr std::size_t kLargestEntrySize = std::size_t{1} << 20;

const passwd* nextEntry() {
  for (;;) {
    errno = 0;
    const passwd* entry = getpwent();
    if (entry || errno != EINTR) return entry;
  }
}

}  // namespace

// Not getpwent_r: not every system has it, and what is enumerated has one place for the whole process all the same.
std::vector<std::uint32_t> PosixIdentities::userIDsOfUserDatabase() {
  std::vector<std::uint32_t> userIDs;
  const std::lock_guard lock(enumeration_);
  setpwent();
  while (const passwd* entry = nextEntry()) userIDs.push_back(entry->pw_uid);
  endpwent();
  return userIDs;
}

bool PosixIdentities::mayBeUserID(std::uint32_t userID) {
  std::vector<char> text(kUsualEntrySize);
  for (;;) {
    passwd entry{};
    passwd* found = nullptr;
    const int problem = getpwuid_r(userID, &entry, text.data(), text.size(), &found);
    if (found) return true;
    if (problem == EINTR) continue;
    // POSIX asks for 0 where there is no such user; these are what some directory services say instead. An entry beyond
    // all measure counts as an error.
    if (problem != ERANGE || text.size() >= kLargestEntrySize)
      return problem != 0 && problem != ENOENT && problem != ESRCH && problem != EBADF && problem != EPERM;
    text.resize(text.size() * 4);
  }
}

}  // namespace vantrell::host
