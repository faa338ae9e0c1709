// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/xattr.h>

#include "host/linux/LinuxFileSystem.h"
#include "tests/host/FileSystemImplementation.h"
#include "tests/support/FlagOverlayFileSystem.h"
#include "tests/support/MountedFileSystem.h"

namespace vantrell::tests {

inline FileSystemCandidate makeLinuxFileSystem() {
  return {nullptr, std::make_unique<host::LinuxFileSystem>()};
}
inline FileSystemCandidate makeFlagOverlay() {
  auto base = std::make_unique<host::LinuxFileSystem>();
  auto overlay = std::make_unique<FlagOverlayFileSystem>(*base);
  return {std::move(base), std::move(overlay)};
}
inline auto fileSystemImplementations() {
  return testing::Values(FileSystemImplementation{"Linux", makeLinuxFileSystem},
                         FileSystemImplementation{"FlagOverlay", makeFlagOverlay});
}

// What file systems here can do.
inline constexpr bool kNamesAreAnyBytes = true;
inline constexpr bool kLinksHaveModes = false;
inline constexpr bool kEveryTypeHasFlags = false;
inline constexpr bool kSpecialFilesHaveAttributes = true;
inline constexpr bool kWhiteoutsCanBeMade = true;
/// Whether there is a regular file on a file system that keeps neither attributes nor lists nor times of creation and
/// tells no sizes, and where.
inline constexpr bool kHasPseudoFiles = true;
inline constexpr const char* kPseudoFolder = "/proc/self";
inline constexpr const char* kPseudoFile = "status";
inline constexpr const char* kAttributesThatHoldLists[] = {"system.posix_acl_access", "system.posix_acl_default"};

inline timespec accessTimeOf(const struct stat& status) {
  return status.st_atim;
}
inline timespec modificationTimeOf(const struct stat& status) {
  return status.st_mtim;
}
inline timespec changeTimeOf(const struct stat& status) {
  return status.st_ctim;
}

/// An attribute of the object itself, past all code under test; -1 where there is none.
inline ssize_t sizeOfAttribute(const std::string& path, const char* name) {
  return lgetxattr(path.c_str(), name, nullptr, 0);
}

/// Whether the system gives objects this attribute without being asked.
inline bool isSystemsOwnAttribute(const std::string&) {
  return false;
}

}  // namespace vantrell::tests
