// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include <sys/types.h>

namespace vantrell::host {

/// Disks as each kernel has them.

/// Whether what is open is a device that has positions and takes a block of 512 bytes or any number of them in one
/// write.
bool isDisk(int descriptor, mode_t mode) noexcept;

/// Has writes to a disk go past the kernel's cache, where they can. What comes back is what positions and sizes must be
/// multiples of from now on, a divisor of `piece`; 0 where everything is as before.
std::uint64_t beginUncachedWriting(int disk, std::uint64_t piece) noexcept;

/// Takes that back. False where it can't be.
bool endUncachedWriting(int disk) noexcept;

}  // namespace vantrell::host
