// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantrell {

/// What is known of an operating-system utility that clients may have run.
struct TrustedUtility {
  std::optional<std::string> path;  // nothing for a name that is not in the table
  bool isExternal = false;          // its permissions have to be checked
  bool needsSafePathEnvironment = false;
};

/// Looks a utility up by its bare file name; clients never name paths. `applicationPath` only must not be empty. Where
/// one of both is empty nothing is known at all.
TrustedUtility trustedUtility(std::string_view applicationPath, std::string_view utilityName);

/// The search path of programs that need a safe one.
inline constexpr char kSafeSearchPath[] = "/usr/bin:/bin:/usr/sbin:/sbin";

}  // namespace vantrell
