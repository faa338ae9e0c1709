// Copyright (c) 2026 Vantrell. All rights reserved.
// SPDX-License-Identifier: LicenseRef-Vantrell

#include <gtest/gtest.h>

#include "client/TerminalText.h"

namespace vantrell {
namespace {

TEST(TerminalSafe, LeavesPrintableTextAlone) {
  EXPECT_EQ(terminalSafe("/tmp/a b\\c-\xC3\xA4\xF0\x9F\x98\x80"), "/tmp/a b\\c-\xC3\xA4\xF0\x9F\x98\x80");
  EXPECT_EQ(terminalSafe(""), "");
}

TEST(TerminalSafe, EscapesWhatATerminalActsUpon) {
  EXPECT_EQ(terminalSafe("a\nb\tc\rd"), "a\\nb\\tc\\rd");
  EXPECT_EQ(terminalSafe("\x1b[2J\x07\x7f"), "\\x1b[2J\\x07\\x7f");
  EXPECT_EQ(terminalSafe(std::string_view("\0", 1)), "\\x00");
  EXPECT_EQ(terminalSafe("\xC2\x9B"), "\\u{9b}") << "the one-character control sequence introducer";
}

TEST(TerminalSafe, EscapesWhatTurnsTheDirectionOfWriting) {
  EXPECT_EQ(terminalSafe("a\xE2\x80\xAE"
                         "b"),
            "a\\u{202e}b");
  EXPECT_EQ(terminalSafe("\xE2\x81\xA6"), "\\u{2066}");
}

TEST(TerminalSafe, ShowsBytesThatAreNotUtf8) {
  EXPECT_EQ(terminalSafe("a\xFFz\xC3"), "a\\xffz\\xc3");
}

TEST(TerminalSafe, KeepsLineBreaksOnRequest) {
  EXPECT_EQ(terminalSafe("a\nb\r\n", LineBreaks::Keep), "a\nb\\r\n");
}

}  // namespace
}  // namespace vantrell
