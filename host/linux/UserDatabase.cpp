// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/UserDatabase.h"

#include <cerrno>
#include <cstddef>
#include <vector>

#include <pwd.h>

namespace vantrell::host {
namespace {

constexpr std::size_t kLargestRecord = std::size_t{1} << 20;

/// `look` fills a record with texts in the buffer given and returns an error number, ERANGE where that is too small.
template <class Look>
std::optional<UserRecord> find(const Look& look) {
  std::vector<char> buffer(1024);
  for (;;) {
    passwd record;
    passwd* found = nullptr;
    const int error = look(&record, buffer, &found);
    if (error == EINTR) continue;
    if (error == ERANGE && buffer.size() < kLargestRecord) {
      buffer.resize(buffer.size() * 2);
      continue;
    }
    if (error != 0 || !found) return std::nullopt;
    return UserRecord{record.pw_uid, record.pw_gid, record.pw_dir ? record.pw_dir : ""};
  }
}

}  // namespace

std::optional<UserRecord> SystemUserDatabase::userNamed(const std::string& name) const {
  if (name.contains('\0')) return std::nullopt;
  return find([&](passwd* record, std::vector<char>& buffer, passwd** found) {
    return getpwnam_r(name.c_str(), record, buffer.data(), buffer.size(), found);
  });
}

std::optional<UserRecord> SystemUserDatabase::userWithIdentifier(uid_t identifier) const {
  return find([&](passwd* record, std::vector<char>& buffer, passwd** found) {
    return getpwuid_r(identifier, record, buffer.data(), buffer.size(), found);
  });
}

}  // namespace vantrell::host
