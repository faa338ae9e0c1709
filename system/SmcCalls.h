// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "host/SmcDriver.h"

namespace vantrell {

/// One call over a connection of its own: connects, opens the user client, makes the call, closes the user client
/// whatever came of the call, and disconnects. The code of the first step that failed, else the call's; `output` is
/// all zero unless the call was made.
host::SmcReturnCode callSmcDriver(host::SmcDriver& driver, const host::SmcRecord& input, host::SmcRecord& output);

/// Reads a value into `buffer`, the rest of which becomes zero. kSmcBadArgument without a key, a buffer or a size;
/// kSmcNotFound when there is no such key; kSmcInternalError when the controller refuses for another reason, as it does
/// for values that can only be written; else what the calls returned.
///
/// `size` goes in as how much of the buffer may be filled and comes out as the smaller of that and what the controller
/// says of the value (of which no more than 32 bytes ever come; the rest is zero). `type` is set as soon as it is
/// known. Both are untouched by a failure before that.
host::SmcReturnCode readSmcKey(host::SmcDriver& driver, std::uint32_t key, std::span<std::uint8_t> buffer,
                               std::size_t& size, std::uint32_t& type);

}  // namespace vantrell
