// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>

#include <systemd/sd-bus.h>

namespace vantrell::host {

// What sd-bus tells whoever pumps it. For the holder of the bus's lock.

/// Messages inside that wait to be written.
std::uint64_t queuedMessages(sd_bus* bus) noexcept;

/// Until the bus wants to be processed again, rounded up; -1 for never.
int millisecondsUntilDue(sd_bus* bus) noexcept;

}  // namespace vantrell::host
