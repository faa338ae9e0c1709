// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "foundation/Date.h"
#include "host/linux/codesign/OpenSslHandles.h"

namespace vantrell::host::codesign {

using Fingerprint = std::array<std::uint8_t, 32>;  // SHA-256 over a certificate

/// The vendor's root certificate ("Apple Root CA"), as its publisher gives it.
inline constexpr Fingerprint kVendorRoot = {
    0xB0, 0xB1, 0x73, 0x0E, 0xCB, 0xC7, 0xFF, 0x45, 0x05, 0x14, 0x2C, 0x49, 0xF1, 0x29, 0x5E, 0x6E,
    0xDA, 0x6B, 0xCA, 0xED, 0x7E, 0x2C, 0x68, 0xC5, 0xBE, 0x91, 0xB5, 0xA1, 0x10, 0x01, 0xF0, 0x24,
};

/// Whom to believe, and when.
struct Trust {
  Fingerprint anchor = kVendorRoot;
  std::function<Date()> now = Date::now;
};

/// What the certificate at the start of a chain is for.
enum class CertificateUse : std::uint8_t { CodeSigning, TimeStamping };

struct ChainVerdict {
  enum class Kind : std::uint8_t {
    Trusted,
    OtherAnchor,  // leads to no root, or to another one
    Expired,      // not, or no longer, valid at that time
    Refused,
  };
  Kind kind = Kind::Refused;
  std::string reason;  // a clause; empty when trusted
};

/// Whether `leaf` leads, through `candidates` alone, to the certificate among them that has the anchor's fingerprint,
/// as of `time`; and whether it may be used so. Extensions of the vendor's own (below 1.2.840.113635.100.6) that are
/// marked critical are taken as understood; any other unknown critical one is refused. SHA-1 signatures of certificates
/// count: old intermediates have no others. Revocation isn't asked about.
ChainVerdict verifyChain(X509* leaf, STACK_OF(X509) * candidates, const Fingerprint& anchor, CertificateUse use,
                         const Date& time);

/// Common names from `leaf` upward as far as `candidates` reach; nothing is verified.
std::vector<std::string> chainNames(X509* leaf, STACK_OF(X509) * candidates);

}  // namespace vantrell::host::codesign
