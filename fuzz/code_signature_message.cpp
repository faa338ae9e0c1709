// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstdint>
#include <cstdlib>

#include "host/linux/codesign/TimeStamp.h"

using namespace vantrell;
using namespace vantrell::host::codesign;

/// A cryptographic message, alone; no input can be one that the vendor's root vouches for.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto message = SignedMessage::parse({data, size});
  if (!message) return 0;
  (void)message->verify(DataView(data, size), "1.2.840.113549.1.7.1");
  (void)message->signedAttributeValues("1.2.840.113635.100.9.2");
  (void)chainNames(message->signer(), message->certificates());
  const auto time = verifiedTimeOf(*message, kVendorRoot);
  if (time && *time) std::abort();
  const auto verdict = verifyChain(message->signer(), message->certificates(), kVendorRoot, CertificateUse::CodeSigning,
                                   Date{1'700'000'000, 0});
  if (verdict.kind == ChainVerdict::Kind::Trusted) std::abort();
  return 0;
}
