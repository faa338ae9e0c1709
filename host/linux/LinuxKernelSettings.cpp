// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "host/linux/LinuxKernelSettings.h"

#include <cerrno>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

#include "foundation/PosixCodes.h"
#include "host/posix/ErrorNumbers.h"
#include "host/posix/FileDescriptor.h"

namespace vantrell::host {
namespace {

// A component made of dots alone ("." and "..") shows up as empty ones: dots are what the name is split at.
std::optional<std::string> relativePathOf(std::string_view name) {
  if (name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) return std::nullopt;
  std::string path;
  for (;;) {
    const auto component = name.substr(0, name.find('.'));
    if (component.empty()) return std::nullopt;
    path.append("/").append(component);
    if (component.size() == name.size()) return path;
    name.remove_prefix(component.size() + 1);
  }
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
  const auto path = relativePathOf(name);
  if (!path) return Error::posix(posix::kNoEntry);
  return writeKernelVariable(root_ + *path, value);
}

}  // namespace vantrell::host
