// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <map>
#include <string>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileSystem.h"

namespace vantrell {

/// Names, as bytes, and values, none of which is empty.
using ExtendedAttributeSet = std::map<std::string, Data>;

// Errors below are of the POSIX domain, with the path under NSFilePath but for code 22. The object must exist, links
// followed (2), whatever is asked for a link itself.

/// The names are those of the object, or with `notFollowingLinks` of a link itself; the values are always those of
/// what the link leads to, and of the compression attribute there is none to be had, listed or not. Names without a
/// value, or with an empty one, don't appear.
Result<ExtendedAttributeSet> extendedAttributesForItemAtPath(host::FileSystem& fileSystem, const std::string& path,
                                                             bool notFollowingLinks, bool exposingFSCompression);

/// The set of an object at hand. POSIX errors without user info.
Result<ExtendedAttributeSet> extendedAttributesOf(const host::ObjectHandle& object);

/// An empty path, value or name is POSIX error 22.
ErrorOrNil setForItemAtPath(host::FileSystem& fileSystem, const std::string& path, DataView value,
                            const std::string& ofExtendedAttribute, bool notFollowingLinks);

/// An empty path or name is POSIX error 22.
ErrorOrNil removeFromItemAtPath(host::FileSystem& fileSystem, const std::string& path,
                                const std::string& extendedAttribute, bool notFollowingLinks,
                                bool includingFSCompression);

/// A POSIX error with the path that it is about.
Error posixErrorAtPath(const Error& posixError, const std::string& path);

}  // namespace vantrell
