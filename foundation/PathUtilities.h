// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <string_view>

namespace vantrell {

// Paths as texts; none of these asks the file system.

/// "/a/b" and "/a/b/" give "/a", "/a" and "/" give "/", "a" gives "".
std::string stringByDeletingLastPathComponent(std::string_view path);

/// The two joined by one slash, without a slash at the end: "/a/" and "b/" give "/a/b", "" and "b" give "b".
std::string stringByAppendingPathComponent(std::string_view path, std::string_view component);

/// "/a/b/" gives "b", "/" gives "/".
std::string_view lastPathComponent(std::string_view path);

/// "/a//" gives "/a", "//" gives "/". To the kernel a slash at the end means "follow the link before it".
std::string_view pathWithoutTrailingSlashes(std::string_view path);

/// What follows the last dot of the last component, unless that dot is the component's first character:
/// "/a/b.tar.gz/" gives "gz"; "b", ".b", "b." and ".." give "".
std::string_view pathExtension(std::string_view path);

/// The last component without its extension and dot: "/a/b.tar.gz" gives "b.tar", "b." gives "b", ".b" stays.
std::string_view nameWithoutPathExtension(std::string_view path);

/// The path as text: names are bytes, and those that are not UTF-8 are shown with U+FFFD in place of what is wrong.
std::string displayablePath(std::string_view path);

}  // namespace vantrell
