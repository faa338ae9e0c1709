// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/xattr.h>

#include "host/macos/MacFileSystem.h"
#include "tests/host/FileSystemImplementation.h"
#include "tests/macos/MountedFileSystem.h"

namespace vantrell::tests {

inline FileSystemCandidate makeMacFileSystem() {
  return {nullptr, std::make_unique<host::MacFileSystem>()};
}
inline auto fileSystemImplementations() {
  return testing::Values(FileSystemImplementation{"Mac", makeMacFileSystem});
}

// What file systems here can do.
inline constexpr bool kNamesAreAnyBytes = false;
inline constexpr bool kLinksHaveModes = true;
inline constexpr bool kEveryTypeHasFlags = true;
inline constexpr bool kSpecialFilesHaveAttributes = false;
inline constexpr bool kWhiteoutsCanBeMade = false;
inline constexpr bool kHasPseudoFiles = false;
inline constexpr const char* kPseudoFolder = "";
inline constexpr const char* kPseudoFile = "";
inline constexpr const char* kAttributesThatHoldLists[] = {"com.apple.system.Security"};

inline timespec accessTimeOf(const struct stat& status) {
  return status.st_atimespec;
}
inline timespec modificationTimeOf(const struct stat& status) {
  return status.st_mtimespec;
}
inline timespec changeTimeOf(const struct stat& status) {
  return status.st_ctimespec;
}

/// An attribute of the object itself, past all code under test; -1 where there is none.
inline ssize_t sizeOfAttribute(const std::string& path, const char* name) {
  return getxattr(path.c_str(), name, nullptr, 0, 0, XATTR_NOFOLLOW);
}

/// Whether the system gives objects this attribute without being asked.
inline bool isSystemsOwnAttribute(const std::string& name) {
  return name == "com.apple.provenance";
}

}  // namespace vantrell::tests
