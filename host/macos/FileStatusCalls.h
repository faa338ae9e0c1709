// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include <sys/stat.h>

#include "foundation/Date.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileStatus.h"
#include "host/macos/ObjectPlace.h"

namespace vantrell::host {

FileStatus fileStatusOf(const struct stat& status);
Result<FileStatus> readFileStatus(const ObjectPlace& place);

/// See ObjectHandle's functions of these names. None of them opens the object.
ErrorOrNil writeFlags(const ObjectPlace& place, std::uint32_t flags);
ErrorOrNil writePermissions(const ObjectPlace& place, std::uint16_t permissions);
ErrorOrNil writeTimes(const ObjectPlace& place, std::optional<Date> accessed, std::optional<Date> modified);
ErrorOrNil writePresentTime(const ObjectPlace& place);

}  // namespace vantrell::host
