// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <memory>

#include <gtest/gtest.h>

#include "host/linux/NettleCryptography.h"
#include "tests/host/CryptographyContract.h"

namespace vantrell::tests {
namespace {

INSTANTIATE_TEST_SUITE_P(Linux, CryptographyContract,
                         testing::Values(CryptographyImplementation{
                             "Nettle", [] { return std::make_unique<host::NettleCryptography>(); }}),
                         CryptographyContract::nameOf);

}  // namespace
}  // namespace vantrell::tests
