// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/ConfigurationLock.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantrell::host {
namespace {

constexpr mode_t kMode = 0644;

bool hold(int file, bool wait) {
  while (flock(file, wait ? LOCK_EX : LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR) return false;
  }
  return true;
}

// Whoever held the lock has removed the file by the time that we get hold of it.
bool isStillThere(int folder, const std::string& name, int file) {
  struct stat ours;
  struct stat current;
  return fstat(file, &ours) == 0 && fstatat(folder, name.c_str(), &current, AT_SYMLINK_NOFOLLOW) == 0 &&
         ours.st_dev == current.st_dev && ours.st_ino == current.st_ino;
}

// For people to look at. A lock that can't say whose it is holds nevertheless.
void signWithIdentifier(int file) {
  const auto text = std::to_string(getpid()) + '\n';
  if (ftruncate(file, 0) == 0) static_cast<void>(pwrite(file, text.data(), text.size(), 0) > 0);
}

}  // namespace

// Others may read the file only once it is ours: who can open a file can lock it.
std::optional<ConfigurationLock> ConfigurationLock::acquire(int folder, const std::string& name, bool wait) {
  for (;;) {
    FileDescriptor file(
        openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!file || !hold(file.get(), wait)) return std::nullopt;
    if (!isStillThere(folder, name, file.get())) continue;
    if (fchmod(file.get(), kMode) != 0) return std::nullopt;
    signWithIdentifier(file.get());
    return ConfigurationLock(folder, name, std::move(file));
  }
}

bool ConfigurationLock::release() {
  if (!file_) return false;
  const bool isRemoved = unlinkat(folder_, name_.c_str(), 0) == 0;
  file_.reset();
  return isRemoved;
}

}  // namespace vantrell::host
