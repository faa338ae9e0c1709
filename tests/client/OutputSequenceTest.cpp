// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "client/OutputSequence.h"

namespace vantrell {
namespace {

class OutputSequenceTest : public testing::Test {
 protected:
  void add(std::uint64_t number, std::string_view text) {
    const auto bytes = bytesOf(text);
    sequence_.add(number, number % 2 == 0 ? OutputStream::Output : OutputStream::Error,
                  Data(bytes.begin(), bytes.end()));
  }

  std::string seen_;
  OutputSequence sequence_{[this](OutputStream stream, DataView chunk) {
    seen_ += stream == OutputStream::Error ? "!" : "";
    seen_ += textOf(chunk);
  }};
};

TEST_F(OutputSequenceTest, HandsOutAtOnceWhatIsDue) {
  add(0, "a");
  EXPECT_EQ(seen_, "a");
  add(1, "b");
  EXPECT_EQ(seen_, "a!b");
}

TEST_F(OutputSequenceTest, HoldsBackWhatComesEarly) {
  add(2, "c");
  add(1, "b");
  EXPECT_EQ(seen_, "");
  add(0, "a");
  EXPECT_EQ(seen_, "a!bc");
  add(3, "d");
  EXPECT_EQ(seen_, "a!bc!d");
}

TEST_F(OutputSequenceTest, LosesNothingThatComesLateOrTwice) {
  add(0, "a");
  add(0, "A");
  add(1, "b");
  add(0, "x");
  EXPECT_EQ(seen_, "aA!bx");
}

TEST_F(OutputSequenceTest, HandsOutTheRestInOrder) {
  add(5, "f");
  add(3, "d");
  sequence_.flush();
  EXPECT_EQ(seen_, "!d!f");
  sequence_.flush();
  EXPECT_EQ(seen_, "!d!f");
}

TEST_F(OutputSequenceTest, GivesUpTheOrderRatherThanHoldWithoutBound) {
  for (std::uint64_t i = 1; i <= OutputSequence::kMostChunksHeld; ++i) add(i, "x");
  EXPECT_EQ(seen_, "");
  add(OutputSequence::kMostChunksHeld + 1, "x");
  EXPECT_EQ(std::ranges::count(seen_, 'x'), static_cast<std::ptrdiff_t>(OutputSequence::kMostChunksHeld + 1));
  seen_.clear();
  add(OutputSequence::kMostChunksHeld + 2, "next");
  EXPECT_EQ(seen_, "next");

  const std::string large(OutputSequence::kMostBytesHeld / 2 + 1, 'l');
  seen_.clear();
  add(10'000, large);
  EXPECT_EQ(seen_, "");
  add(10'001, large);
  EXPECT_EQ(std::ranges::count(seen_, 'l'), static_cast<std::ptrdiff_t>(2 * large.size()));
}

}  // namespace
}  // namespace vantrell
