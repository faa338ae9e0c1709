// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <vector>

#include "foundation/Error.h"

namespace vantrell {

/// What a person gets to read about an error.
struct ErrorText {
  std::string description;         // empty for a result with code 0, which is no failure
  std::string recoverySuggestion;  // empty when there is none
};

/// The error's own texts, templates filled in; without a description of its own, a sentence for its domain and code,
/// with the path that the error is about.
ErrorText textOfError(const Error& error);

/// What stands beneath the error, outermost first, one line for each: description, domain and code.
std::vector<std::string> causesOfError(const Error& error);

/// "(DOMAIN, code N)"
std::string originOfError(const Error& error);

}  // namespace vantrell
