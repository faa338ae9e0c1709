// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "host/linux/PosixAccessList.h"

namespace vantrell::host {

/// The contiguous form in which libacl hands lists from program to program (acl_copy_ext): the size of the whole in the
/// machine's own size type, then entries of one size in its own order.
Data libraryFormOfList(const PosixAccessList& list);

/// Reads one such form from the start of `bytes` and moves `bytes` behind it. Nothing comes of a form without entries.
/// POSIX error 22 unless the form lies wholly within `bytes` and is a valid list.
Result<std::optional<PosixAccessList>> takeLibraryForm(DataView& bytes);

}  // namespace vantrell::host
