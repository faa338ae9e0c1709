// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <memory>

#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/DirectoryHandle.h"
#include "host/FileStatus.h"
#include "host/macos/MacAccessControlList.h"
#include "host/macos/ObjectPlace.h"

namespace vantrell::host {

// The library has calls for paths and for open objects only; these reach an entry of an open folder, and an object that
// is held without being open.

/// See ObjectHandle::accessControlList.
Result<std::unique_ptr<AccessControlList>> readAccessControlList(const ObjectPlace& place);

/// See DirectoryHandle::examineRightsOf.
Result<ExaminedRights> examineRights(const ObjectPlace& place, const FileStatus& status, const AccessControlList* list);

/// See ObjectHandle::setAccessControlList.
ErrorOrNil writeAccessControlList(const ObjectPlace& place, const AccessControlList* list);

}  // namespace vantrell::host
