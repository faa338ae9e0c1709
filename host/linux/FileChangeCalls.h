// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/FileStatus.h"
#include "host/linux/AccessControlCalls.h"

namespace vantrell::host {

/// Sets the low twelve mode bits; see ObjectHandle::setPermissions.
ErrorOrNil writePermissions(const AccessListPlace& place, std::uint16_t permissions);

/// The mode bits alone, as the kernel takes them: an access control list's mask goes with the group's bits. For an
/// object that was just created. Success without effect where the file system keeps no modes.
ErrorOrNil writeModeOfNewObject(int location, std::uint16_t permissions);

}  // namespace vantrell::host
