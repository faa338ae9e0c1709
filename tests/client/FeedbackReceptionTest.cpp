// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <atomic>
#include <chrono>
#include <thread>

#include <gtest/gtest.h>

#include "client/FeedbackReception.h"
#include "tests/client/ClientFixture.h"

namespace vantrell {
namespace {

using namespace std::chrono_literals;

class FeedbackReceptionConcurrentTest : public tests::ClientFixture {};

TEST_F(FeedbackReceptionConcurrentTest, GivesUpWhenNothingComesAnyMore) {
  FeedbackReception reception;
  ASSERT_EQ(reception.open(*transport_, [](const Dictionary&) {}), std::nullopt);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(reception.waitForRest(100ms));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 100ms);
}

TEST_F(FeedbackReceptionConcurrentTest, WaitsForASlowReaderHoweverLong) {
  FeedbackReception reception;
  std::atomic<bool> handled = false;
  ASSERT_EQ(reception.open(*transport_,
                           [&](const Dictionary&) {
                             std::this_thread::sleep_for(500ms);
                             handled = true;
                           }),
            std::nullopt);
  auto* listener = dynamic_cast<tests::FakeFeedbackListener*>(reception.listener());
  const std::jthread service([&] {
    listener->deliver({});
    listener->close();
  });
  while (!reception.waitForRest(100ms) && !handled) {
    // The message had not begun yet.
  }
  EXPECT_TRUE(reception.waitForRest(10s));
  EXPECT_TRUE(handled);
}

TEST_F(FeedbackReceptionConcurrentTest, HasNothingToWaitForUnlessOpened) {
  FeedbackReception reception;
  EXPECT_EQ(reception.listener(), nullptr);
  EXPECT_TRUE(reception.waitForRest(10s));
}

}  // namespace
}  // namespace vantrell
