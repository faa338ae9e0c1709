// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "foundation/Data.h"

namespace vantrell::host {

/// An object's extended access control list: what grants or denies rights beside owner, group and mode, with what a
/// folder hands on to new objects in it. Made by the file system only; immutable, safe from any thread.
///
/// On Linux: the named entries of the POSIX access list, each with its effective permissions, and a folder's default
/// list. On macOS: the list of ACL_TYPE_EXTENDED.
class AccessControlList {
 public:
  virtual ~AccessControlList() = default;

  virtual bool isEmpty() const noexcept = 0;

  /// The platform's contiguous form, which FileSystem::accessControlListFromExternalForm reads.
  virtual Data externalForm() const = 0;
};

}  // namespace vantrell::host
