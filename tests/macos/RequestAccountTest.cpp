// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <cstdint>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "host/macos/RequestAccount.h"

namespace vantrell::tests {
namespace {

using host::RequestAccount;

std::shared_ptr<RequestAccount> account(std::size_t requests, std::size_t bytes) {
  host::TransportLimits limits;
  limits.unansweredRequests = requests;
  limits.unansweredBytes = bytes;
  return std::make_shared<RequestAccount>(limits);
}

bool takes(const std::shared_ptr<RequestAccount>& account, std::size_t bytes) {
  return static_cast<bool>(RequestAccount::charge(account, bytes));
}

TEST(RequestAccount, BoundsTheRequests) {
  const auto narrow = account(2, 100);
  auto first = RequestAccount::charge(narrow, 0);
  const auto second = RequestAccount::charge(narrow, 0);
  EXPECT_TRUE(first && second);
  EXPECT_FALSE(takes(narrow, 0));
  first.settle();
  first.settle();
  EXPECT_FALSE(static_cast<bool>(first));
  const auto third = RequestAccount::charge(narrow, 0);
  EXPECT_TRUE(static_cast<bool>(third));
  EXPECT_FALSE(takes(narrow, 0)) << "settled once, however often it is said";
}

TEST(RequestAccount, BoundsTheBytes) {
  const auto narrow = account(10, 100);
  const auto large = RequestAccount::charge(narrow, 60);
  EXPECT_TRUE(static_cast<bool>(large));
  EXPECT_FALSE(takes(narrow, 41));
  EXPECT_FALSE(takes(narrow, SIZE_MAX));
  EXPECT_TRUE(takes(narrow, 40));
  EXPECT_TRUE(takes(narrow, 40)) << "a charge that is let go is settled";
}

TEST(RequestAccount, AChargeMovesWithItsRequest) {
  const auto narrow = account(1, 100);
  auto charge = RequestAccount::charge(narrow, 1);
  {
    const auto moved = std::move(charge);
    EXPECT_FALSE(takes(narrow, 1));
  }
  EXPECT_TRUE(takes(narrow, 1));
}

}  // namespace
}  // namespace vantrell::tests
