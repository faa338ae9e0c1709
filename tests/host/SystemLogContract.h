// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "host/SystemLog.h"

/// The suite of tests/host/SystemLogTest.cpp, which every log must pass, wherever it leads. Each file that has some to
/// offer instantiates it.
namespace vantrell::tests {

struct SystemLogImplementation {
  const char* name;
  std::function<std::unique_ptr<host::SystemLog>()> make;
  friend void PrintTo(const SystemLogImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

struct SystemLogContract : testing::TestWithParam<SystemLogImplementation> {
  static std::string nameOf(const testing::TestParamInfo<SystemLogImplementation>& info) { return info.param.name; }

  std::unique_ptr<host::SystemLog> log = GetParam().make();
};

}  // namespace vantrell::tests
