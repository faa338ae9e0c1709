// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "host/linux/AppleSmcDriver.h"
#include "tests/system/SmcDriverContract.h"
#include "tests/system/SmcFakeAttributes.h"

namespace vantrell::tests {
namespace {

SmcDriverCandidate makeLinux() {
  auto smc = std::make_shared<FakeAppleSmc>();
  smc->keys = {{"#KEY", "ui32", std::string("\0\0\0\6", 4)},
               {"F0Mn", "fpe2", "\x1F\x40"},
               {"FNum", "ui8", "\2"},
               {"FS! ", "ui16", std::string(2, '\0')},
               {"KPPW", "ui16", std::string(2, '\0'), false},
               {"RBr ", "ch8*", "br"}};
  auto driver = std::make_unique<host::AppleSmcDriver>(std::make_unique<FakeSmcAttributes>(*smc));
  return {std::move(smc), std::move(driver)};
}

INSTANTIATE_TEST_SUITE_P(All, SmcDriverContract, testing::Values(SmcDriverImplementation{"Linux", makeLinux}),
                         SmcDriverContract::nameOf);

}  // namespace
}  // namespace vantrell::tests
