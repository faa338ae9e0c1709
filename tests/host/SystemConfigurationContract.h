// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "host/SystemConfiguration.h"

/// The suites of tests/host/SystemConfigurationTest.cpp, which every SystemConfiguration must pass. Each file that has
/// one to offer instantiates them.
namespace vantrell::tests {

/// A configuration database, empty at first, and what is in it past all code under test.
struct SystemConfigurationCandidate {
  virtual ~SystemConfigurationCandidate() = default;
  virtual host::SystemConfiguration& configuration() = 0;
  virtual Dictionary contents(const std::string& identifier) = 0;
  virtual void setContents(const Dictionary& contents) = 0;
  /// Why it can't be tested here; empty where it can.
  virtual std::string reasonToSkip() const { return {}; }
};

struct SystemConfigurationImplementation {
  const char* name;
  std::function<std::unique_ptr<SystemConfigurationCandidate>()> make;
  friend void PrintTo(const SystemConfigurationImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

struct SystemConfigurationContract : testing::TestWithParam<SystemConfigurationImplementation> {
  static std::string nameOf(const testing::TestParamInfo<SystemConfigurationImplementation>& info) {
    return info.param.name;
  }

  void SetUp() override {
    if (const auto reason = candidate->reasonToSkip(); !reason.empty()) GTEST_SKIP() << reason;
  }

  std::unique_ptr<SystemConfigurationCandidate> candidate = GetParam().make();

  std::unique_ptr<host::SystemConfigurationSession> open(std::string_view identifier = {}) {
    return candidate->configuration().open("client", identifier);
  }
  bool setAndCommit(const std::string& key, const Value& value) {
    const auto session = open();
    return session->lock(true) && session->setValue(key, value) && session->applyChanges() &&
           session->commitChanges() && session->unlock();
  }
};

struct SystemConfigurationContractConcurrent : SystemConfigurationContract {};

/// Where identifiers are nothing but names, and where what is stored is looked at again and again.
struct StrictSystemConfigurationContract : SystemConfigurationContract {};

}  // namespace vantrell::tests
