// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>

#include "client/CommandContext.h"
#include "client/ExitStatus.h"
#include "foundation/Error.h"
#include "foundation/Value.h"

namespace vantrell {

/// Success for nil and for code 0, NoConnection when the service refused the client's token, else Failure.
ExitStatus exitStatusForResult(const ErrorOrNil& result);

/// Shows an operation's answer: as JSON one line in any case; else the values of a result with code 0 on standard
/// output, and a failure on standard error.
ExitStatus printResult(const CommandContext& context, const ErrorOrNil& result);

/// One value of a result for people: "1 (folder)" under "ObjectExistence".
std::string resultValueText(const std::string& key, const Value& value);

}  // namespace vantrell
