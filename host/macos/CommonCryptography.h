// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "host/Cryptography.h"

namespace vantrell::host {

/// SHA-1, RC4 and randomness from the C library's CommonCrypto.
class CommonCryptography final : public Cryptography {
 public:
  Result<std::unique_ptr<Sha1Context>> makeSha1() override;
  Result<Sha1Digest> sha1(DataView bytes) override;
  ErrorOrNil rc4(DataView key, DataView input, std::span<std::uint8_t> output) override;
  ErrorOrNil randomBytes(std::span<std::uint8_t> output) override;
};

}  // namespace vantrell::host
