// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include <systemd/sd-bus.h>

#include "foundation/Error.h"

namespace vantrell::host {

/// The POSIX error for a D-Bus error that came in the place of an answer: 22 where the arguments were refused, 54 where
/// the service ended before it answered, 57 where there is no service, 100 where it does not know the method.
Error errorOfReply(const sd_bus_error& error);

/// The POSIX code (Darwin's number) for a negative result of sd-bus on a connection: 54 where the far end is gone, 100
/// where it speaks something else.
std::int64_t codeOfConnectionFailure(int result) noexcept;

}  // namespace vantrell::host
