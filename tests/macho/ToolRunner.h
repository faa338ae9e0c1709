// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <cstdlib>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/RunProgram.h"

namespace vantrell::tests {

/// The path of a program that `PATH` leads to.
inline std::optional<std::string> findTool(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::istringstream folders(path != nullptr ? path : "");
  for (std::string folder; std::getline(folders, folder, ':');) {
    const std::string candidate = folder + "/" + name;
    if (access(candidate.c_str(), X_OK) == 0) return candidate;
  }
  return std::nullopt;
}

/// Runs a tool that findTool finds, and expects that it succeeds. Returns its standard output.
inline std::string runTool(const std::string& name, const std::vector<std::string>& arguments) {
  const auto path = findTool(name);
  if (!path) {
    ADD_FAILURE() << name << " is not installed";
    return "";
  }
  const ProgramResult result = runProgram(*path, arguments);
  EXPECT_EQ(result.status, 0) << name << ": " << result.error;
  return result.output;
}

}  // namespace vantrell::tests

/// Skips the test, saying why, where a program is missing.
#define VANTRELL_NEEDS_TOOL(name)                                                      \
  do {                                                                                 \
    if (!vantrell::tests::findTool(name)) GTEST_SKIP() << name << " is not installed"; \
  } while (false)
