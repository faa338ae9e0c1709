// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include "client/CommandContext.h"
#include "client/CommandLine.h"
#include "client/ExitStatus.h"

namespace vantrell {

/// Carries out one command line.
ExitStatus carryOut(const CommandLine& line, const CommandContext& context);

}  // namespace vantrell
