// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <string>
#include <vector>

#import <Foundation/Foundation.h>

#include "foundation/Error.h"

namespace vantrell::host {

/// What the Security framework has to say against a piece of code. For Objective-C++ sources only.
struct CodeSigningObjection {
  /// As StaticCode::checkValidity answers it.
  Error error;
  /// As StaticCode::findings tells them.
  std::vector<std::string> findings;
};

/// From the status of a validity check that failed, and the error that came with it (nil where none did). Lists of
/// paths are cut at 10000.
CodeSigningObjection objectionFrom(OSStatus status, NSError* details);

/// An error of the code-signing domain with the platform's sentence for it as description.
Error codeSigningError(OSStatus status);

}  // namespace vantrell::host
