// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include "process/TrustedUtilities.h"

#include <algorithm>
#include <array>

namespace vantrell {

namespace {

constexpr std::array<std::string_view, 18> kTrustedPaths = {
    "/usr/bin/dscacheutil",
    "/bin/chmod",
    "/usr/sbin/chown",
    "/usr/bin/update_dyld_shared_cache",
    "/usr/bin/ditto",
    "/usr/sbin/diskutil",
    "/usr/bin/mdutil",
    "/usr/bin/atsutil",
    "/bin/launchctl",
    "/usr/sbin/cupsctl",
    "/usr/bin/tmutil",
    "/usr/libexec/xpchelper",
    "/usr/sbin/kextcache",
    "/usr/bin/pmset",
    "/usr/bin/log",
    "/usr/sbin/softwareupdate",
    "/usr/libexec/firmwarecheckers/ethcheck/ethcheck",
    "/usr/sbin/asr",
};

// Not in the table, so that its need never takes effect; clients of this table may count on both.
constexpr std::string_view kUtilityWithSafePath = "periodic";

constexpr std::string_view lastComponent(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

TrustedUtility trustedUtility(std::string_view applicationPath, std::string_view utilityName) {
  if (applicationPath.empty() || utilityName.empty()) return {};
  TrustedUtility utility{
      .path = std::nullopt, .isExternal = true, .needsSafePathEnvironment = utilityName == kUtilityWithSafePath};
  const auto found = std::ranges::find(kTrustedPaths, utilityName, lastComponent);
  if (found != kTrustedPaths.end()) utility.path = std::string(*found);
  return utility;
}

}  // namespace vantrell
