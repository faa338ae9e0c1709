// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "foundation/Date.h"
#include "foundation/Error.h"
#include "foundation/Result.h"
#include "host/linux/codesign/CertificateChain.h"
#include "host/linux/codesign/CodeDirectory.h"
#include "host/linux/codesign/SignedMessage.h"

namespace vantrell::host::codesign {

/// Nothing when `message` was made over all of `directories`, the first one first, by the owner of a certificate that
/// the anchor vouches for. kRequirementFailed where everything else is right but another root does.
///
/// The message is over the first directory; its signed attributes hold the hashes of all. They may be missing where
/// there is one directory only. Certificates are judged as of the time that a time stamp vouches for, else as of now:
/// the time that a signer gives itself counts for nothing.
ErrorOrNil verifySignature(const SignedMessage& message, std::span<const CodeDirectory> directories,
                           const Trust& trust);

}  // namespace vantrell::host::codesign
