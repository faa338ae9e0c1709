// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "client/CommandContext.h"
#include "client/ExitStatus.h"

namespace vantrell {

/// Prints the keys of this computer's System Management Controller, or of a simulated one: a table of key, type, access
/// and decoded value, or one JSON object a line: {"key", "type", "writeOnly", "value"}. Type and value of a key that
/// can't be read are "-" (null in JSON), and standard error tells why; that is no failure of the command. Failure where
/// there is no controller, or where it doesn't tell its keys.
///
/// The controller is read by this process, without the service.
ExitStatus printSmcKeys(const CommandContext& context, bool simulated);

}  // namespace vantrell
