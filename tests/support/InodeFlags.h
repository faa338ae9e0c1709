// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cerrno>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace vantrell::tests {

/// The inode flags of a file or folder, asked for and set past all code under test. Throw std::system_error.
inline unsigned inodeFlags(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  unsigned flags = 0;
  const bool succeeded = file >= 0 && ioctl(file, FS_IOC_GETFLAGS, &flags) == 0;
  const int error = errno;
  if (file >= 0) close(file);
  if (!succeeded) throw std::system_error(error, std::system_category(), "flags of " + path);
  return flags;
}
inline void setInodeFlags(const std::string& path, unsigned flags) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  const bool succeeded = file >= 0 && ioctl(file, FS_IOC_SETFLAGS, &flags) == 0;
  const int error = errno;
  if (file >= 0) close(file);
  if (!succeeded) throw std::system_error(error, std::system_category(), "setting flags of " + path);
}
inline void addInodeFlags(const std::string& path, unsigned flags) {
  setInodeFlags(path, inodeFlags(path) | flags);
}

}  // namespace vantrell::tests
