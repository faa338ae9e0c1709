// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/AppleSmcAttributes.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {

namespace {
constexpr std::size_t kPage = 4096;
}  // namespace

bool SysfsSmcAttributes::exist() const {
  struct stat status;
  return stat(folder_.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

Result<std::string> SysfsSmcAttributes::read(const std::string& name) const {
  const FileDescriptor file(open((folder_ + "/" + name).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!file) return errnoFailure();
  std::string content(kPage + 1, '\0');
  ssize_t count;
  do count = ::read(file.get(), content.data(), content.size());
  while (count < 0 && errno == EINTR);
  if (count < 0) return errnoFailure();
  if (static_cast<std::size_t>(count) > kPage) return posixFailure(posix::kFileTooLarge);
  content.resize(static_cast<std::size_t>(count));
  return content;
}

// The driver acts on each write by itself, so one that was cut short must not be continued.
ErrorOrNil SysfsSmcAttributes::write(const std::string& name, std::string_view text) const {
  const int flags = O_WRONLY | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const FileDescriptor file(open((folder_ + "/" + name).c_str(), flags));
  if (!file) return errorFromErrno();
  ssize_t count;
  do count = ::write(file.get(), text.data(), text.size());
  while (count < 0 && errno == EINTR);
  if (count < 0) return errorFromErrno();
  if (static_cast<std::size_t>(count) != text.size()) return Error::posix(posix::kInputOutput);
  return std::nullopt;
}

}  // namespace vantrell::host
