// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "foundation/Data.h"
#include "host/SmcDriver.h"
#include "system/SmcCalls.h"
#include "system/SmcCodes.h"

/// The suite of tests/system/SmcDriverContractTest.cpp: what every way to a System Management Controller must do, real
/// or simulated, that may be written to. Each file that has one to offer instantiates it.
namespace vantrell::tests {

/// A controller with the keys #KEY, F0Mn (writable speed), FNum, FS! (writable bits), KPPW (write-only), RBr (read-only
/// text).
struct SmcDriverCandidate {
  std::shared_ptr<void> behind;  // what the driver talks to, where that is no part of it
  std::unique_ptr<host::SmcDriver> driver;
};
struct SmcDriverImplementation {
  const char* name;
  std::function<SmcDriverCandidate()> make;
};

class SmcDriverContract : public testing::TestWithParam<SmcDriverImplementation> {
 public:
  static std::string nameOf(const testing::TestParamInfo<SmcDriverImplementation>& info) { return info.param.name; }

 protected:
  host::SmcRecord call(host::SmcRecord request) {
    host::SmcRecord answer;
    EXPECT_EQ(callSmcDriver(driver_, request, answer), host::kSmcSuccess);
    return answer;
  }
  host::SmcRecord info(const char* key) {
    return call({.key = smcKeyFromString(key), .command = host::smc_command::kKeyInfo});
  }
  host::SmcRecord read(const char* key, std::uint32_t size) {
    return call(
        {.key = smcKeyFromString(key), .keyInfo = {.dataSize = size}, .command = host::smc_command::kReadValue});
  }
  host::SmcRecord write(const char* key, const Data& bytes) {
    host::SmcRecord request{.key = smcKeyFromString(key),
                            .keyInfo = {.dataSize = static_cast<std::uint32_t>(bytes.size())},
                            .command = host::smc_command::kWriteValue};
    std::ranges::copy(bytes, request.bytes.begin());
    return call(request);
  }

  SmcDriverCandidate candidate_ = GetParam().make();
  host::SmcDriver& driver_ = *candidate_.driver;
};

}  // namespace vantrell::tests
