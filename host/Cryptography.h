// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "foundation/Data.h"
#include "foundation/Error.h"
#include "foundation/Result.h"

namespace vantrell::host {

inline constexpr std::size_t kSha1Size = 20;
using Sha1Digest = std::array<std::uint8_t, kSha1Size>;

/// A SHA-1 digest (FIPS 180-4) in the making; one thread at a time.
class Sha1Context {
 public:
  virtual ~Sha1Context() = default;
  virtual void update(DataView bytes) = 0;
  /// Ends the digest and begins a new, empty one.
  virtual Sha1Digest finish() = 0;
};

/// Digests, the stream cipher and randomness of the platform. Stateless, safe from any thread.
class Cryptography {
 public:
  virtual ~Cryptography() = default;

  virtual Result<std::unique_ptr<Sha1Context>> makeSha1() = 0;

  /// The digest of `bytes` in one go, without an allocation.
  virtual Result<Sha1Digest> sha1(DataView bytes) = 0;

  /// RC4 of `input` under `key` (1 to 256 bytes) into `output`, which has the input's length and may be the same
  /// memory. Enciphers and deciphers. A bad length is POSIX error 22.
  virtual ErrorOrNil rc4(DataView key, DataView input, std::span<std::uint8_t> output) = 0;

  /// Fills `output` from the platform's cryptographic random source.
  virtual ErrorOrNil randomBytes(std::span<std::uint8_t> output) = 0;
};

}  // namespace vantrell::host
