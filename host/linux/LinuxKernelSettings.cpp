// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxKernelSettings.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"
#include "host/posix/KernelVariableNames.h"

namespace vantrell::host {
namespace {

std::string relativePathOf(std::string_view name) {
  auto path = "/" + std::string(name);
  std::ranges::replace(path, '.', '/');
  return path;
}

}  // namespace

ErrorOrNil writeKernelVariable(const std::string& path, std::int64_t value) {
  if (path.contains('\0')) return Error::posix(posix::kNoEntry);
  const FileDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
  if (!file) return errorFromErrno();
  // The kernel reads one write as one value: it can't be continued by another.
  const auto text = std::to_string(value) + '\n';
  ssize_t count = 0;
  do {
    count = write(file.get(), text.data(), text.size());
  } while (count < 0 && errno == EINTR);
  if (count < 0) return errorFromErrno();
  if (static_cast<std::size_t>(count) != text.size()) return Error::posix(posix::kInputOutput);
  return std::nullopt;
}

ErrorOrNil LinuxKernelSettings::set(std::string_view name, std::int64_t value) {
  if (!canBeKernelVariable(name)) return Error::posix(posix::kNoEntry);
  return writeKernelVariable(root_ + relativePathOf(name), value);
}

}  // namespace vantrell::host
