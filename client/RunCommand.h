// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <span>
#include <string>

#include "client/CommandContext.h"
#include "client/ExitStatus.h"
#include "client/HelperLocation.h"

namespace vantrell {

/// Performs one operation: registers, performs, shows the feedback as it comes, shows the answer, unregisters. The
/// first request to end the process (Ctrl-C) cancels the operation, whose answer is still waited for; the second one
/// ends the process at once.
ExitStatus runOperation(const CommandContext& context, const ConnectionOptions& connection,
                        const std::string& identifier, std::span<const std::string> words);

/// The service's version over the wire.
ExitStatus printServiceVersion(const CommandContext& context, const ConnectionOptions& connection);

}  // namespace vantrell
