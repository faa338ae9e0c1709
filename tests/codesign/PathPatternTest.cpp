// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <string>

#include <gtest/gtest.h>
#include <regex.h>

#include "host/linux/codesign/PathPattern.h"
#include "host/linux/codesign/ResourceSeal.h"

namespace vantrell::tests {

using host::codesign::PathPattern;

constexpr std::uint64_t kPlenty = 1'000'000'000;

bool isFound(const std::string& expression, const std::string& path) {
  const auto pattern = PathPattern::parse(expression);
  if (!pattern) {
    ADD_FAILURE() << expression << " isn't understood";
    return false;
  }
  std::uint64_t steps = kPlenty;
  return pattern->isFoundIn(path, steps).value();
}

TEST(PathPattern, MatchesAsThePlatformsOwnEngineDoes) {
  const std::string expressions[] = {"^Resources/",
                                     "^.*",
                                     "^(.*/)?\\.DS_Store$",
                                     "^Resources/.*\\.lproj/",
                                     "^Resources/.*\\.lproj/locversion.plist$",
                                     ".*\\.dSYM($|/)",
                                     "^[^/]+$",
                                     "^(Frameworks|PlugIns|Library/(Automator|Spotlight))/",
                                     "a+b?c*",
                                     "x[a-c]y",
                                     "[]a]$",
                                     "(ab|a)(bc|c)$",
                                     "^(a*)*b",
                                     "^version\\.plist$"};
  const std::string paths[] = {"",
                               "Resources/",
                               "Resources/en.lproj/locversion.plist",
                               "Resources/en.lproj/a",
                               ".DS_Store",
                               "a/b/.DS_Store",
                               "xDS_Store",
                               "Info.plist",
                               "PlugIns/a.dSYM",
                               "PlugIns/a.dSYM/x",
                               "Library/Spotlight/x",
                               "Library/x",
                               "aaab",
                               "xby",
                               "xdy",
                               "]",
                               "abc",
                               "ac",
                               "aaaa",
                               "version.plist",
                               "versionXplist"};
  for (const auto& expression : expressions) {
    regex_t reference;
    ASSERT_EQ(regcomp(&reference, expression.c_str(), REG_EXTENDED | REG_NOSUB), 0);
    for (const auto& path : paths) {
      EXPECT_EQ(isFound(expression, path), regexec(&reference, path.c_str(), 0, nullptr, 0) == 0)
          << expression << " in " << path;
    }
    regfree(&reference);
  }
}

TEST(PathPattern, WhatIsNotUnderstoodIsNoPattern) {
  for (const char* expression :
       {"", "a{2}", "(", ")", "(a", "[a", "[[:alpha:]]", "*a", "\\w", "a|", "()", "[b-a]", "\\"}) {
    EXPECT_FALSE(PathPattern::parse(expression)) << expression;
  }
  EXPECT_FALSE(PathPattern::parse(std::string(2000, 'a')));
  EXPECT_FALSE(PathPattern::parse(std::string(100, '(') + "a" + std::string(100, ')')));
}

TEST(PathPattern, HostileExpressionsTakeLinearTime) {
  const std::string path(4000, 'a');
  EXPECT_FALSE(isFound("^(a*)*(a*)*(a*)*(a|a)*(a+)+b$", path));
  std::uint64_t steps = 1000;
  EXPECT_FALSE(PathPattern::parse("(a|a)*b")->isFoundIn(path, steps).has_value());
  EXPECT_EQ(steps, 0U);
}

}  // namespace vantrell::tests
