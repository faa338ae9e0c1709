// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include <openssl/evp.h>

#include "foundation/Data.h"

namespace vantrell::host::codesign {

/// How a code directory hashes (CS_HASHTYPE_… of the platform's public cs_blobs.h); the numbers stand in the file.
enum class HashType : std::uint8_t { Sha1 = 1, Sha256 = 2, Sha256Truncated = 3, Sha384 = 4 };

/// Longest stored hash, in bytes.
inline constexpr std::size_t kLongestHash = 48;

/// A code directory's own hash as others refer to it is cut to this many bytes.
inline constexpr std::size_t kCdHashSize = 20;

/// Nothing for numbers that aren't known.
std::optional<HashType> hashTypeFromNumber(std::uint8_t number) noexcept;

/// Length of the hashes that the directory stores; the truncated kind stores 20 bytes of 32.
std::size_t storedHashSize(HashType type) noexcept;

/// libcrypto's name of the algorithm.
const char* digestName(HashType type) noexcept;

/// Computes one digest after another with the state of the algorithm made once: a program has a page each 4 KiB. One
/// thread at a time.
class CodeDigest {
 public:
  explicit CodeDigest(const char* algorithm);

  /// False where libcrypto hasn't the algorithm, or has failed since; digests don't compare as equal then.
  bool isUsable() const noexcept { return usable_; }

  void begin() noexcept;
  void update(DataView bytes) noexcept;
  /// The whole digest. Valid until the next call.
  DataView finish() noexcept;

  DataView digestOf(DataView bytes) noexcept;
  /// Whether the digest of `bytes`, cut to the length of `expected`, which must not be empty, equals it.
  bool matches(DataView bytes, DataView expected) noexcept;

 private:
  struct FreeAlgorithm {
    void operator()(EVP_MD* algorithm) const noexcept { EVP_MD_free(algorithm); }
  };
  struct FreeContext {
    void operator()(EVP_MD_CTX* context) const noexcept { EVP_MD_CTX_free(context); }
  };

  std::unique_ptr<EVP_MD, FreeAlgorithm> algorithm_;
  std::unique_ptr<EVP_MD_CTX, FreeContext> context_;
  bool usable_ = false;
  std::uint8_t digest_[EVP_MAX_MD_SIZE];
};

/// The digest of `bytes` in full length; empty where libcrypto fails.
Data digestOf(HashType type, DataView bytes);
Data digestOf(const char* algorithm, DataView bytes);

}  // namespace vantrell::host::codesign
