// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdio>
#include <string>

#include <gtest/gtest.h>

namespace vantrell::tests {

/// What a command line of the shell writes to its standard output. Fails the test where it can't be run or ends with
/// another status than 0. Only for words that need no quoting, or are quoted.
inline std::string outputOf(const std::string& command) {
  std::FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    ADD_FAILURE() << command;
    return {};
  }
  std::string output;
  char piece[4096];
  while (const std::size_t count = std::fread(piece, 1, sizeof piece, pipe)) output.append(piece, count);
  EXPECT_EQ(pclose(pipe), 0) << command;
  return output;
}

}  // namespace vantrell::tests
