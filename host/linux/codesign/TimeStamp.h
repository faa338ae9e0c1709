// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>

#include "foundation/Date.h"
#include "foundation/Result.h"
#include "host/linux/codesign/CertificateChain.h"
#include "host/linux/codesign/SignedMessage.h"

namespace vantrell::host::codesign {

/// The time that a time stamp (RFC 3161) in the message's unsigned attributes vouches for. Nothing where there is none;
/// an error where there is one that doesn't hold: it isn't over this signature, or its own signer isn't traced to the
/// anchor as of that time.
Result<std::optional<Date>> verifiedTimeOf(const SignedMessage& message, const Fingerprint& anchor);

}  // namespace vantrell::host::codesign
