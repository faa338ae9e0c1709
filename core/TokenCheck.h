// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdint>
#include <optional>

#include "catalogue/QELPrivilegedToolOperationSet.h"
#include "core/ClientRegistry.h"
#include "foundation/Data.h"
#include "foundation/Date.h"
#include "foundation/Value.h"
#include "host/Cryptography.h"

namespace vantrell {

/// Results of the token check beyond those of the envelope (1 to 8) and success (0).
namespace token_result {
inline constexpr unsigned kMalformed = 101;       // no arguments, or a token shorter than the digest
inline constexpr unsigned kDigestFailed = 102;    // the digest could not be computed
inline constexpr unsigned kDigestMismatch = 103;  // the token is damaged
inline constexpr unsigned kNotRegistered = 104;   // no key for the process identifier in the token
inline constexpr unsigned kDeciphermentFailed = 105;
}  // namespace token_result

/// Tells authentic requests from others.
///
/// A token is: SHA-1 of all that follows it (20 bytes), the registered process identifier (8, little-endian), the
/// request envelope enciphered with RC4 under the client's key (the rest). It holds for 30 seconds and may be used
/// again within them.
class TokenCheck {
 public:
  TokenCheck(const QELPrivilegedToolOperationSet& operationSet, const ClientRegistry& clients,
             host::Cryptography& cryptography)
      : operationSet_(operationSet), clients_(clients), cryptography_(cryptography) {}

  /// `arguments` is nothing when the client sent none. One digest, one pass of the cipher, one allocation.
  QELPrivilegedToolOperationSet::CheckResult checkToken(DataView token, std::uint64_t code,
                                                        const std::optional<Array>& arguments, Date now) const;

 private:
  const QELPrivilegedToolOperationSet& operationSet_;
  const ClientRegistry& clients_;
  host::Cryptography& cryptography_;
};

}  // namespace vantrell
