// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantrell {

/// The file URL of an absolute path: "/a b" gives "file:///a%20b". Any bytes but letters, digits and "-._~/" are
/// escaped. Of a relative path, which means nothing to a process that works for others, it is one without a path.
std::string fileURLWithPath(std::string_view path);

/// Whether the URL's scheme is "file", in upper or lower case.
bool isFileURL(std::string_view url);

/// The absolute path that a file URL of this computer stands for, without slashes at its end and without what follows
/// "?" or "#". Nothing for other URLs, for those of other hosts, and for malformed ones.
std::optional<std::string> pathOfFileURL(std::string_view url);

}  // namespace vantrell
