// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include <gtest/gtest.h>

#include "host/Cryptography.h"

/// The suite of tests/host/CryptographyTest.cpp, which every Cryptography must pass. Each file that has one to offer
/// instantiates it.
namespace vantrell::tests {

struct CryptographyImplementation {
  const char* name;
  std::function<std::unique_ptr<host::Cryptography>()> make;
  friend void PrintTo(const CryptographyImplementation& implementation, std::ostream* stream) {
    *stream << implementation.name;
  }
};

struct CryptographyContract : testing::TestWithParam<CryptographyImplementation> {
  static std::string nameOf(const testing::TestParamInfo<CryptographyImplementation>& info) { return info.param.name; }

  std::unique_ptr<host::Cryptography> cryptography = GetParam().make();

  /// In hexadecimal.
  std::string sha1(std::string_view text) const;
  Result<Data> rc4(DataView key, DataView input) const;
};

}  // namespace vantrell::tests
