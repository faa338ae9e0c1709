// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "host/FirmwareVariables.h"

/// The suite of tests/host/FirmwareVariablesTest.cpp, which every FirmwareVariables with a memory of its own must pass.
/// Each file that has one to offer instantiates it.
namespace vantrell::tests {

struct FirmwareVariablesCandidate {
  virtual ~FirmwareVariablesCandidate() = default;
  virtual host::FirmwareVariables& firmware() = 0;
  virtual void removeOptions() = 0;
};

struct FirmwareVariablesImplementation {
  const char* name;
  std::function<std::unique_ptr<FirmwareVariablesCandidate>()> make;
  friend void PrintTo(const FirmwareVariablesImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

struct FirmwareVariablesContract : testing::TestWithParam<FirmwareVariablesImplementation> {
  static std::string nameOf(const testing::TestParamInfo<FirmwareVariablesImplementation>& info) {
    return info.param.name;
  }

  std::unique_ptr<FirmwareVariablesCandidate> candidate = GetParam().make();

  std::optional<Value> value(std::string_view name) { return candidate->firmware().options()->value(name); }
  host::DeviceReturnCode set(std::string_view name, const Value& value) {
    return candidate->firmware().options()->setValue(name, value);
  }
};

}  // namespace vantrell::tests
