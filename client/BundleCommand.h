// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "client/CommandContext.h"
#include "client/ExitStatus.h"

namespace vantrell {

/// Prints what the bundle inspector says of a software package; Failure where it finds none. As JSON one object:
/// {"path", "packageStyle", "softwareType" (both as numbers), "softwareTypeName", "version", "identifier", "lastUsed",
/// "name", "informationFile", "contents", "resources", "executable", "developmentLocalization", "localizations",
/// "services", "isCodesigned", "isMRJApplication", "isRevolutionApplication"}, null standing for what is missing.
ExitStatus describeBundle(const CommandContext& context, const std::string& path);

}  // namespace vantrell
