// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "client/ProgressBar.h"
#include "tests/client/FakeTerminal.h"

namespace vantrell {
namespace {

TEST(ProgressLine, FillsTheBarWithTheFraction) {
  EXPECT_EQ(progressLine(0.0, 19), "[----------]   0 %");
  EXPECT_EQ(progressLine(0.5, 19), "[#####-----]  50 %");
  EXPECT_EQ(progressLine(1.0, 19), "[##########] 100 %");
}

TEST(ProgressLine, Says100OnlyWhenAllIsDone) {
  EXPECT_EQ(progressLine(0.9999, 19), "[#########-]  99 %");
}

TEST(ProgressLine, LeavesTheLastColumnFreeAndStaysReadable) {
  for (unsigned columns = 0; columns < 300; ++columns) {
    const auto line = progressLine(1.0, columns);
    EXPECT_TRUE(line.ends_with("100 %"));
    if (columns >= 14) {
      EXPECT_LT(line.size(), columns);
    }
    EXPECT_LE(line.size(), 70u);
  }
  EXPECT_EQ(progressLine(0.25, 8), " 25 %");
}

class ProgressBarTest : public testing::Test {
 protected:
  ProgressBarTest() {
    terminal_.error = true;
    terminal_.width = 19;
  }
  std::string drawn() {
    auto text = out_.str();
    out_.str("");
    return text;
  }

  tests::FakeTerminal terminal_;
  std::ostringstream out_;
  ProgressBar bar_{out_, terminal_};
};

TEST_F(ProgressBarTest, RedrawsItsLineInPlace) {
  bar_.show(0.5);
  EXPECT_EQ(drawn(), "\r\x1b[K[#####-----]  50 %");
  bar_.show(0.75);
  EXPECT_EQ(drawn(), "\r\x1b[K[#######---]  75 %");
}

TEST_F(ProgressBarTest, DrawsNothingWhenNothingWouldChange) {
  bar_.show(0.5);
  drawn();
  bar_.show(0.5001);
  EXPECT_EQ(drawn(), "");
}

TEST_F(ProgressBarTest, MakesRoomForOtherOutput) {
  bar_.hide();
  bar_.redraw();
  EXPECT_EQ(drawn(), "");
  bar_.show(0.5);
  drawn();
  bar_.hide();
  EXPECT_EQ(drawn(), "\r\x1b[K");
  bar_.hide();
  EXPECT_EQ(drawn(), "");
  bar_.redraw();
  EXPECT_EQ(drawn(), "\r\x1b[K[#####-----]  50 %");
}

TEST_F(ProgressBarTest, ClampsWhatIsNoFraction) {
  bar_.show(7.0);
  EXPECT_EQ(drawn(), "\r\x1b[K[##########] 100 %");
  bar_.show(-1.0);
  EXPECT_EQ(drawn(), "\r\x1b[K[----------]   0 %");
  bar_.show(1.0);
  drawn();
  bar_.show(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(drawn(), "\r\x1b[K[----------]   0 %");
}

TEST_F(ProgressBarTest, TakesTheUsualWidthWhereTheTerminalDoesNotTell) {
  terminal_.width = std::nullopt;
  bar_.show(1.0);
  EXPECT_EQ(drawn(), "\r\x1b[K[" + std::string(60, '#') + "] 100 %");
}

}  // namespace
}  // namespace vantrell
