// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>

#include <gtest/gtest.h>

#include "host/macos/CommonCryptography.h"
#include "tests/host/CryptographyContract.h"

namespace vantrell::tests {
namespace {

INSTANTIATE_TEST_SUITE_P(Mac, CryptographyContract,
                         testing::Values(CryptographyImplementation{
                             "CommonCrypto", [] { return std::make_unique<host::CommonCryptography>(); }}),
                         CryptographyContract::nameOf);

}  // namespace
}  // namespace vantrell::tests
