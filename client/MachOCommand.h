// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "client/CommandContext.h"
#include "client/ExitStatus.h"

namespace vantrell {

/// Prints what an executable in the Mach-O format consists of, its descriptors included, and what the reader has to say
/// about it to standard error; of an executable in this host's own format, its descriptor. Failure where neither reader
/// yields anything. As JSON one object: {"file", "format" ("mach-o" or "host"), "descriptors", "report" (mach-o only)}.
ExitStatus describeExecutable(const CommandContext& context, const std::string& path);

}  // namespace vantrell
