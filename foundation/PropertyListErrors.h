// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "foundation/Error.h"

namespace vantrell {

/// The platform's user-info key for a text meant for developers.
inline constexpr char NSDebugDescriptionErrorKey[] = "NSDebugDescription";

/// Cocoa domain, code 3840: the list is malformed or over a limit.
Error corruptPropertyList(std::string reason);

/// Cocoa domain, code 3851: the value can't be written.
Error unwritablePropertyList(std::string reason);

}  // namespace vantrell
