// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "process/TrustedUtilities.h"

namespace vantrell {
namespace {

TEST(TrustedUtilities, EachNameHasItsFixedPath) {
  const std::pair<const char*, const char*> table[] = {
      {"dscacheutil", "/usr/bin/dscacheutil"},
      {"chmod", "/bin/chmod"},
      {"chown", "/usr/sbin/chown"},
      {"update_dyld_shared_cache", "/usr/bin/update_dyld_shared_cache"},
      {"ditto", "/usr/bin/ditto"},
      {"diskutil", "/usr/sbin/diskutil"},
      {"mdutil", "/usr/bin/mdutil"},
      {"atsutil", "/usr/bin/atsutil"},
      {"launchctl", "/bin/launchctl"},
      {"cupsctl", "/usr/sbin/cupsctl"},
      {"tmutil", "/usr/bin/tmutil"},
      {"xpchelper", "/usr/libexec/xpchelper"},
      {"kextcache", "/usr/sbin/kextcache"},
      {"pmset", "/usr/bin/pmset"},
      {"log", "/usr/bin/log"},
      {"softwareupdate", "/usr/sbin/softwareupdate"},
      {"ethcheck", "/usr/libexec/firmwarecheckers/ethcheck/ethcheck"},
      {"asr", "/usr/sbin/asr"},
  };
  EXPECT_EQ(std::size(table), 18u);
  for (const auto& [name, path] : table) {
    const auto utility = trustedUtility("/Applications/Some.app", name);
    EXPECT_EQ(utility.path, path);
    EXPECT_TRUE(utility.isExternal);
    EXPECT_FALSE(utility.needsSafePathEnvironment);
  }
}

TEST(TrustedUtilities, NothingElseHasAPath) {
  for (const char* name : {"rm", "/bin/chmod", "bin/chmod", "../bin/chmod", "chmod ", "CHMOD", "", ".", ".."}) {
    EXPECT_EQ(trustedUtility("/Applications/Some.app", name).path, std::nullopt) << name;
  }
}

TEST(TrustedUtilities, PeriodicNeedsASafePathButIsNotInTheTable) {
  const auto utility = trustedUtility("app", "periodic");
  EXPECT_EQ(utility.path, std::nullopt);
  EXPECT_TRUE(utility.isExternal);
  EXPECT_TRUE(utility.needsSafePathEnvironment);
}

TEST(TrustedUtilities, WithAnEmptyNameNothingIsKnown) {
  for (const auto& utility : {trustedUtility("", "chmod"), trustedUtility("app", "")}) {
    EXPECT_EQ(utility.path, std::nullopt);
    EXPECT_FALSE(utility.isExternal);
    EXPECT_FALSE(utility.needsSafePathEnvironment);
  }
}

}  // namespace
}  // namespace vantrell
