// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "client/CommandContext.h"
#include "client/ExitStatus.h"

namespace vantrell {

/// Prints who signed the code at a path, and whatever speaks against the signature: every architecture, sealed
/// resources and nested code, and that the signer is traced to the vendor's root. Success where nothing does. As JSON
/// one object:
/// {"path", "valid", "code" (0, or the platform's), "identifier", "team", "adHoc", "authorities", "findings"}, with
/// null for what a signature doesn't tell or there is no signature to tell.
///
/// This process verifies, without the service.
ExitStatus describeSignature(const CommandContext& context, const std::string& path);

}  // namespace vantrell
