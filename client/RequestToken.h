// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include "foundation/Data.h"
#include "foundation/Result.h"
#include "host/Cryptography.h"

namespace vantrell {

/// The token that proves a request: SHA-1 digest of all that follows it (20 bytes), the process identifier under which
/// the client is registered (8 bytes, little-endian), the request envelope enciphered with RC4 under the client's key.
Result<Data> makeRequestToken(std::uint64_t pid, DataView key, DataView envelope, host::Cryptography& cryptography);

/// The same envelope as if made now: its operation UUID is kept. A token is good for 30 seconds, so the cancellation of
/// an operation that takes longer needs a renewed one. Nothing when `envelope` is none.
std::optional<Data> renewedEnvelope(DataView envelope);

}  // namespace vantrell
