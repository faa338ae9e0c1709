// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "host/Applications.h"

/// The suite of tests/host/ApplicationsTest.cpp, which all Applications must pass that tests can install something
/// for. Each file that has some to offer instantiates it.
namespace vantrell::tests {

/// Applications, and how their world comes to hold some.
struct ApplicationsCandidate {
  virtual ~ApplicationsCandidate() = default;
  virtual host::Applications& applications() = 0;
  /// Its path.
  virtual std::string addApplication(const std::string& name, const std::string& identifier) = 0;
  virtual void setLastUsedDate(const std::string& path, const Date& date) = 0;
};

struct ApplicationsImplementation {
  const char* name;
  std::function<std::unique_ptr<ApplicationsCandidate>()> make;
  friend void PrintTo(const ApplicationsImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

struct ApplicationsContract : testing::TestWithParam<ApplicationsImplementation> {
  static std::string nameOf(const testing::TestParamInfo<ApplicationsImplementation>& info) { return info.param.name; }

  std::unique_ptr<ApplicationsCandidate> candidate = GetParam().make();

  std::vector<std::string> find(const std::string& identifier) {
    return candidate->applications().locationsOfApplicationsWithIdentifier(identifier);
  }
  std::optional<Date> lastUsed(const std::string& path) {
    return candidate->applications().lastUsedDateOfItemAtPath(path);
  }
};

}  // namespace vantrell::tests
